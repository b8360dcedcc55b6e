#include "replay.h"

#include "records/trc_walk.h"

struct Replay::Sink {
  Replay& replay;
  void OnName(NameId id, std::string_view utf8) { replay.m_names.emplace_back(id, utf8); }
  void OnTrace(const std::uint8_t* record) { replay.m_records.push_back(record); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return true; }
};

class Replay::Connection final : public TraceThread_i {
 public:
  explicit Connection(Replay& replay) : m_replay(replay) {}
  void Disconnect() override { delete this; }
  int HasTraces() override {
    return !m_paused && m_replay.m_given < m_replay.m_arrived && !m_replay.m_records.empty();
  }
  TraceEvent_i* NextTrace() override {
    return new _TraceEvent_t(m_replay.m_records[m_replay.m_given++ % m_replay.m_records.size()]);
  }
  void Pause() override { m_paused = true; }
  void Resume() override { m_paused = false; }
  Counts GetCounts() const override { return {m_replay.m_given, 0}; }

 private:
  Replay& m_replay;
  bool m_paused = false;
};

Replay::Replay(const std::string& path) : m_file(MappedFile::Open(path)) {
  if (m_file) WalkTrc(m_file->View(), Sink{*this});
}

CTraceRealtimeDoc::Connector Replay::Connector() {
  return [this](const QuorStr::String_t&, NameMap& names) -> TraceThread_i* {
    for (const auto& [id, name] : m_names) names[id].name = name;
    return new Connection(*this);
  };
}

void Replay::Arrive(std::size_t traces) {
  m_arrived += traces;
}
