// A trace file played as live traces, for pictures of a monitor that need neither service nor time.
//
// Owner    Outlives the connections of its Connector, and the traces that they gave out: those
//          borrow the file's bytes.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/mapped_file.h"
#include "documents/trace_realtime_doc.h"

class Replay {
 public:
  // Empty when the file cannot be read.
  explicit Replay(const std::string& path);

  CTraceRealtimeDoc::Connector Connector();
  // So many more of the file's traces wait for the next drain; behind the last comes the first.
  void Arrive(std::size_t traces);

 private:
  class Connection;
  struct Sink;

  std::shared_ptr<const MappedFile> m_file;
  std::vector<std::pair<NameId, std::string>> m_names;
  std::vector<const std::uint8_t*> m_records;
  std::size_t m_given = 0, m_arrived = 0;  // traces since the beginning
};
