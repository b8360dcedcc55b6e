// Imports files of OpenTelemetry's logs and spans into trace files.
//
// Shape    JSON if it begins so, else protobuf. The traces are those
//          that quor/otlp makes of the same requests when they arrive, with the times in them as
//          the time of arrival.
// Owner    Borrows everything but what is held.
// Errors   Read is false with a reason when a write fails or the reader was stopped. Damage of the
//          input is none: what was whole is kept, and Texts tells.
// Threads  One.
#pragma once

#include <string>
#include <vector>

#include "import/fields/import_field.h"
#include "import/import_parts.h"
#include "import/line_reader.h"
#include "quor/otlp/otlp_mapper.h"

class OtlpImport : private OtlpTaker {
 public:
  OtlpImport(const ImportFields& fields, ImportParts& parts);

  // All of one input, of which the messages speak as `name`.
  bool Read(LineReader& reader, const std::string& name, std::string* why);
  // What is not as in the input.
  std::vector<std::string> Texts() const;
  // False: something of the input is damaged, and was left out or cut.
  bool IsWhole() const;

 private:
  void OnRecord(const OtlpSource& source, const OtlpRecord& record) override;
  void OnEnd(const OtlpSource&) override {}
  void ReadJson(LineReader& reader, const std::string& name);
  void ReadProtobuf(LineReader& reader, const std::string& name);
  template <class Message>
  void Take(const Message& message);

  const ImportFields& m_fields;
  ImportParts& m_parts;
  OtlpMapper m_mapper;
  OtlpArrival m_arrival;
  bool m_hasFailed = false;
  std::string m_why;  // of the write that failed
  std::uint64_t m_strange = 0, m_others = 0, m_bad = 0;
  std::string m_firstBad;
};
