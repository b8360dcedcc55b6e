// What a load finds in a piece of its file: traces, names, ids and damage.
//
// Owner    Its traces borrow the bytes of the file.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/mapped_file.h"
#include "documents/load_search.h"
#include "documents/trace_indexes.h"
#include "records/name_map.h"
#include "records/trace_list.h"
#include "records/trc_damage.h"
#include "records/walkers/trc_walkers.h"
#include "records/walkers/trc_window.h"

struct TracePart : TrcPart {
  TracePart() = default;
  // For a piece of so many bytes of the file, of which the walk may read copies.
  TracePart(std::uint64_t bytes, const MappedFile& file,
            TrcWindow::Way way = TrcWindow::Way::ByTrial);

  std::uint64_t Walk(Bytes file, std::uint64_t from, std::uint64_t limit,
                     const Look& look) override;
  // Also looks there for traces. Before the walk.
  void Search(LoadSearch& search) { m_search = search.NewPiece(); }
  LoadSearch::Piece* SearchPiece() const { return m_search.get(); }
  // Takes over what was found behind this part.
  void Append(TracePart& later);

  TraceList_t traces;
  NameMap names;
  TraceIndexes indexes;
  TrcDamage damage;
  std::uint64_t nameRecords = 0;

 private:
  struct Sink;
  std::unique_ptr<LoadSearch::Piece> m_search;
  const MappedFile* m_file = nullptr;  // null: nothing is copied
  TrcWindow::Way m_way = TrcWindow::Way::ByTrial;
};
