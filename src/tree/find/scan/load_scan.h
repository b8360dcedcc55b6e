// The traces of a file whose texts a pattern may match, found by the load of the file.
//
// Owner    Shared with the load.
// Errors   As of LoadSearch.
// Threads  As of LoadSearch; Hits and walks are for one, after the load has ended.
#pragma once

#include <memory>
#include <vector>

#include "documents/load_search.h"
#include "tree/find/scan/piece_scan.h"
#include "tree/find/scan/scan_pieces.h"
#include "tree/regex/program/regex_program.h"

class LoadScan final : public LoadSearch {
 public:
  explicit LoadScan(const RegexProgram& program) : m_plan(program) {}

  std::unique_ptr<Piece> NewPiece() override;
  void Take(Piece& piece, std::size_t first) override;

  // In the order of the file.
  const std::vector<ScanHit>& Hits() const { return m_hits; }

  // The hits of a search that does not wrap. Borrows the scan.
  class Walk {
   public:
    Walk(const LoadScan& scan, const ScanOrder& order);
    // Null: there is none left.
    const ScanHit* Next();

   private:
    const ScanHit *m_next, *m_end;
    const bool m_backward;
  };

 private:
  class Eye;
  const RegexPlan m_plan;
  std::vector<ScanHit> m_hits;
};
