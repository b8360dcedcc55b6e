// One process whose logs and spans are fed to a hub: its source there, its names, and its records.
//
// Owner    Its names. Shares the source.
// Threads  One.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "quor/hub/hub.h"
#include "quor/otlp/otlp_record.h"

class FeedProcess {
 public:
  // The source is new in the hub, under an instance that no other one has.
  FeedProcess(Hub& hub, const OtlpSource& source);
  ~FeedProcess() { m_hub.EndSource(m_source); }
  FeedProcess(const FeedProcess&) = delete;
  FeedProcess& operator=(const FeedProcess&) = delete;

  void Take(const OtlpRecord& record);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  // Most records have the names of the one before.
  struct Last {
    std::string_view text;
    AppNameId id{};
  };
  enum Field { Component, Category, Thread, File, kFields };

  AppNameId Id(Field field, std::string_view text);
  AppNameId Enter(std::string_view text);

  Hub& m_hub;
  std::shared_ptr<Source> m_source;
  SourceNames m_names;
  std::unordered_map<std::string, AppNameId, Hash, std::equal_to<>> m_ids;
  std::array<Last, kFields> m_last;  // views of the keys
  AppNameId m_machine{}, m_app{}, m_pid{};
  std::vector<std::uint8_t> m_record;
};
