// A trace as a JSON object on one line, for dump and tail.
//
// Owner    Borrows the names, which may grow meanwhile; a known name does not change before
//          ForgetIds.
// Threads  One at a time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/moments/trace_moments.h"
#include "records/trace_event.h"

class TraceJson {
 public:
  // Borrows the moments, which have learned the traces.
  TraceJson(const NameMap& names, TraceMoments& moments)
      : m_names(names), m_moments(moments), m_known(kNameIds) {}

  // `index` is the trace's position in the file or stream, from 0. `beside`: it only stands beside
  // a chosen one.
  void Append(std::string& json, std::uint64_t index, const TraceEvent_i& trace,
              bool beside = false);
  // Ids mean other names from now on.
  void ForgetIds();

 private:
  void AppendTime(std::string& json, std::uint64_t index, const TraceEvent_i& trace);
  void AppendName(std::string& json, std::string_view key, NameId id);
  void AppendProcess(std::string& json, NameId id);

  const NameMap& m_names;
  TraceMoments& m_moments;
  std::vector<std::string> m_known;      // as JSON, by id; empty: not made yet
  std::vector<std::string> m_processes;  // the same, with their accounts; as long as needed
};
