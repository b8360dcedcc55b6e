// Plays a trace file as live traces, for pictures of a monitor without service and waiting.
//
// Owner    Outlives the connections of its Connector, and the traces that they gave out, because
//          those refer to the file's bytes.
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
  // So many further traces of the file arrive for the next drain; after the last one comes the
  // first.
  void Arrive(std::size_t traces);

 private:
  class Connection;
  struct Sink;

  std::shared_ptr<const MappedFile> m_file;
  std::vector<std::pair<NameId, std::string>> m_names;
  std::vector<const std::uint8_t*> m_records;
  std::size_t m_given = 0, m_arrived = 0;  // traces since the beginning
};
