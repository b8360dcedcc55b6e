#include "documents/trace_part.h"

#include <algorithm>
#include <utility>

#include "records/trc_walk.h"

namespace {

// Of such a piece the traces are many enough for large blocks from the first on.
constexpr std::uint64_t kLargePiece = std::uint64_t{16} << 20;

}  // namespace

// Of the records in a window.
struct TracePart::Sink {
  TracePart& part;
  const Look& look;
  const std::uint8_t* const window;
  const std::uint8_t* const inFile;  // the same byte
  const std::uint64_t begin;         // its position
  bool goesOn = true;

  void OnName(NameId id, std::string_view utf8) {
    ++part.nameRecords;
    NameEntry_t& entry = part.names[id];
    entry.name = utf8;
    entry.written = 0;
  }
  void OnTrace(const std::uint8_t* record) {
    part.traces.EmplaceRecord(inFile + (record - window));
    part.indexes.Note(RawTrace(record));
  }
  void OnUnknownTag(std::uint64_t position) { part.damage.Skip(begin + position); }
  void OnCutRecord(std::uint64_t position) { part.damage.cutAt = begin + position; }
  bool OnProgress(std::uint64_t position) { return goesOn = look(begin + position); }
};

TracePart::TracePart(std::uint64_t bytes, const MappedFile& file, TrcWindow::Way way)
    : traces(bytes < kLargePiece ? TraceStorage::First::Small : TraceStorage::First::Large),
      m_file(&file),
      m_way(way) {}

std::uint64_t TracePart::Walk(Bytes file, std::uint64_t from, std::uint64_t limit,
                              const Look& look) {
  TrcWindow window(file, m_file, m_way);
  std::uint64_t position = from;
  for (bool goesOn = true; goesOn && position < limit;) {
    Bytes bytes = window.At(position);
    bytes = bytes.first(std::min<std::uint64_t>(bytes.size(), limit - position));
    Sink sink{*this, look, bytes.data(), file.data() + position, position};
    const std::size_t before = traces.size();
    position += WalkTrc(bytes, sink, 0);
    if (m_search && traces.size() > before)
      m_search->See(traces, before, sink.window - sink.inFile);
    goesOn = sink.goesOn && (position >= limit || look(position));
  }
  if (position <= file.size()) damage.cutAt.reset();  // only a window or the piece ends there
  return position;
}

void TracePart::Append(TracePart& later) {
  traces.Append(std::move(later.traces));
  for (auto& [id, entry] : later.names) names[id] = std::move(entry);
  indexes.Append(later.indexes);
  damage.Append(later.damage);
  nameRecords += later.nameRecords;
}
