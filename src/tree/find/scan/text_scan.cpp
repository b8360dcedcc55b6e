#include "tree/find/scan/text_scan.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "tree/find/scan/piece_scan.h"
#include "tree/find/scan/scan_pieces.h"
#include "workers/ordered_results.h"
#include "workers/piece_threads.h"

namespace {

constexpr std::size_t kTracesPerPiece = 16384;
// Pieces that may be done before they are asked for.
constexpr std::size_t kPiecesAhead = 64;
constexpr std::chrono::milliseconds kPause{1};

}  // namespace

using ScanHits = std::vector<ScanHit>;

class TextScan::Work final : public PieceThreads {
 public:
  Work(std::shared_ptr<const LentTraces> traces, const RegexProgram& program,
       const ScanPieces& pieces, bool backward)
      : PieceThreads(pieces.Count()),
        m_traces(std::move(traces)),
        m_plan(program),
        m_pieces(pieces),
        m_backward(backward) {}

  std::optional<ScanHits> Take(std::chrono::milliseconds wait) {
    return m_results.Take(std::chrono::steady_clock::now() + wait);
  }
  bool IsTaken() const { return m_results.Taken() == Count(); }

 private:
  class ScanHand final : public Hand {
   public:
    explicit ScanHand(Work& work) : m_work(work), m_scan(work.m_plan, work.m_traces->traces) {}
    void Do(std::size_t piece) override {
      while (piece > m_work.m_results.Taken() + kPiecesAhead && !m_work.IsStopped())
        std::this_thread::sleep_for(kPause);
      if (m_work.IsStopped()) return;
      const ScanPieces::Range range = m_work.m_pieces.At(piece);
      ScanHits hits = m_scan.Hits(range.from, range.end);
      if (m_work.m_backward) std::reverse(hits.begin(), hits.end());
      m_work.m_results.Put(piece, std::move(hits));
    }

   private:
    Work& m_work;
    PieceScan m_scan;
  };
  std::unique_ptr<Hand> MakeHand() override { return std::make_unique<ScanHand>(*this); }
  void OnFailure() override {}

  const std::shared_ptr<const LentTraces> m_traces;
  const RegexPlan m_plan;
  const ScanPieces m_pieces;
  const bool m_backward;
  OrderedResults<ScanHits> m_results;
};

struct TextScan::Taken {
  ScanHits hits;
  std::size_t next = 0;  // the one behind the current
};

TextScan::TextScan() : m_taken(std::make_unique<Taken>()) {}

TextScan::~TextScan() {
  m_work->Stop();
}

std::unique_ptr<TextScan> TextScan::Begin(std::shared_ptr<const LentTraces> traces,
                                          const RegexProgram& program, const ScanOrder& order) {
  if (!traces || traces->traces.size() < 2 * kTracesPerPiece) return nullptr;
  return BeginWith(PieceThreads::Processors(), kTracesPerPiece, std::move(traces), program, order);
}

std::unique_ptr<TextScan> TextScan::BeginWith(std::size_t threads, std::size_t tracesPerPiece,
                                              std::shared_ptr<const LentTraces> traces,
                                              const RegexProgram& program, const ScanOrder& order) {
  const ScanPieces pieces(traces->traces.size(), order, tracesPerPiece);
  std::unique_ptr<TextScan> scan(new TextScan);
  scan->m_work = std::make_shared<Work>(std::move(traces), program, pieces, order.backward);
  return PieceThreads::Start(scan->m_work, threads) > 0 ? std::move(scan) : nullptr;
}

TextScan::State TextScan::Next(std::chrono::milliseconds wait) {
  while (m_taken->next == m_taken->hits.size()) {
    if (m_work->IsTaken()) return State::Over;
    if (m_work->HasFailed()) return State::Failed;
    std::optional<ScanHits> hits = m_work->Take(wait);
    if (!hits) return State::NotYet;
    *m_taken = {std::move(*hits), 0};
  }
  ++m_taken->next;
  return State::Found;
}

std::size_t TextScan::Place() const {
  return m_taken->hits[m_taken->next - 1].Place();
}

bool TextScan::IsSure() const {
  return m_taken->hits[m_taken->next - 1].IsSure();
}
