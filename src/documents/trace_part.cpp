#include "documents/trace_part.h"

#include <utility>

#include "records/trc_walk.h"

namespace {

// Of such a piece the traces are many enough for large blocks from the first on.
constexpr std::uint64_t kLargePiece = std::uint64_t{16} << 20;

}  // namespace

struct TracePart::Sink {
  TracePart& part;
  const Look& look;

  void OnName(NameId id, std::string_view utf8) {
    ++part.nameRecords;
    NameEntry_t& entry = part.names[id];
    entry.name = utf8;
    entry.written = 0;
  }
  void OnTrace(const std::uint8_t* record) {
    part.traces.EmplaceRecord(record);
    part.indexes.Note(RawTrace(record));
  }
  void OnUnknownTag(std::uint64_t position) { part.damage.Skip(position); }
  void OnCutRecord(std::uint64_t position) { part.damage.cutAt = position; }
  bool OnProgress(std::uint64_t position) { return look(position); }
};

TracePart::TracePart(std::uint64_t bytes)
    : traces(bytes < kLargePiece ? TraceStorage::First::Small : TraceStorage::First::Large) {}

std::uint64_t TracePart::Walk(Bytes file, std::uint64_t from, std::uint64_t limit,
                              const Look& look) {
  const std::uint64_t reached = WalkTrc(file.first(limit), Sink{*this, look}, from);
  if (reached <= file.size()) damage.cutAt.reset();  // only the piece ends in its last record
  return reached;
}

void TracePart::Append(TracePart& later) {
  traces.Append(std::move(later.traces));
  for (auto& [id, entry] : later.names) names[id] = std::move(entry);
  indexes.Append(later.indexes);
  damage.Append(later.damage);
  nameRecords += later.nameRecords;
}
