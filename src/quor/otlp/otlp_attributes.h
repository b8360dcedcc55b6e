// The attributes of a log, span or event: those that are fields of a trace, and the others.
//
// Shape    The first one of a key counts for a field, and the key of today before that of earlier
//          versions. An attribute that gave a field does not stand in the text.
// Owner    Borrows the attributes. Views are valid until the next one is taken from this.
// Threads  One.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "quor/otlp/otlp.pb.h"

using OtlpAttributeList = google::protobuf::RepeatedPtrField<quor::otlp::KeyValue>;

class OtlpAttributes {
 public:
  explicit OtlpAttributes(const OtlpAttributeList& all);

  // Empty or 0: none of them.
  std::string_view Thread();
  std::string_view File();
  std::uint32_t Line();
  std::string_view Stack();
  // Each in the form of AppendAttribute, in their order.
  void AppendOthers(std::string& to) const;

 private:
  enum Key {
    kThreadName,
    kThreadId,
    kFilePath,
    kOldFilePath,
    kLineNumber,
    kOldLineNumber,
    kExceptionStack,
    kOldStack,
    kKeys
  };
  static Key KeyOf(std::string_view key);
  std::string_view TextOf(Key now, Key before);

  const OtlpAttributeList& m_all;
  std::array<int, kKeys> m_places;  // -1: none
  std::array<bool, kKeys> m_used{};
  std::string m_text;
};
