#include "panes/trace_scan.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "docview/dialogs/long_work.h"
#include "workers/ordered_results.h"
#include "workers/piece_threads.h"

namespace {

// One search of a text may take milliseconds.
constexpr std::size_t kPerSlowLook = 16, kPerLook = 512;
constexpr std::size_t kPerSlowPiece = 8192, kPerPiece = 65536;
// What is done with a hit may take a microsecond.
constexpr std::size_t kHitsPerLook = 512;

TraceScanSetup SetupFor(TraceScanSetup setup, const CTraceFilter& filter) {
  const bool slow = filter.IsSlow();
  if (setup.perLook == 0) setup.perLook = slow ? kPerSlowLook : kPerLook;
  if (setup.perPiece == 0) setup.perPiece = slow ? kPerSlowPiece : kPerPiece;
  if (setup.threads == 0) setup.threads = PieceThreads::Processors();
  return setup;
}

}  // namespace

// What the threads share: it has no part of the document but what that has lent.
class TraceScan::Pieces final : public PieceThreads {
 public:
  Pieces(const TraceScan& scan, std::shared_ptr<const LentTraces> lent)
      : PieceThreads((scan.Left() + scan.m_setup.perPiece - 1) / scan.m_setup.perPiece),
        m_lent(std::move(lent)),
        m_filter(scan.m_filter),
        m_names(scan.m_names),
        m_clock(scan.m_clock),
        m_setup(scan.m_setup),
        m_from(static_cast<std::size_t>(scan.m_next - scan.m_begin)),
        m_line(scan.m_line) {}

  std::size_t EndOf(std::size_t piece) const {
    return std::min(m_from + (piece + 1) * m_setup.perPiece, m_lent->traces.size());
  }

  OrderedResults<std::vector<TraceEvent_i*>> m_results;

 private:
  class Matching final : public Hand {
   public:
    explicit Matching(Pieces& all)
        : m_all(all), m_filter(all.m_filter), m_pass(m_filter, *all.m_names, all.m_clock) {}

    void Do(std::size_t piece) override {
      const TraceList_t::Reader& traces = m_all.m_lent->traces;
      const std::size_t from = m_all.m_from + piece * m_all.m_setup.perPiece;
      const std::size_t end = m_all.EndOf(piece);
      if (m_pass.NeedsBefore()) m_pass.BeginBehind(from > 0 ? traces[from - 1] : nullptr);
      std::vector<TraceEvent_i*> hits;
      for (std::size_t at = from; at < end;) {
        if (m_all.IsStopped()) return;
        const std::size_t behind = std::min(at + m_all.m_setup.perLook, end);
        traces.ForEachIn(at, behind, [&](TraceEvent_i* event) {
          if (m_pass.Matches(*event)) hits.push_back(event);
        });
        at = behind;
      }
      if (m_all.m_results.Put(piece, std::move(hits))) m_all.m_line->Ask();
    }

   private:
    Pieces& m_all;
    CTraceFilter m_filter;
    FilterPass m_pass;
  };
  std::unique_ptr<Hand> MakeHand() override { return std::make_unique<Matching>(*this); }
  void OnFailure() override { m_line->Ask(); }

  const std::shared_ptr<const LentTraces> m_lent;
  const CTraceFilter m_filter;
  const std::shared_ptr<const NameMap> m_names;
  const WhereClock m_clock;
  const TraceScanSetup m_setup;
  const std::size_t m_from;
  const std::shared_ptr<PostedStep::Line> m_line;
};

TraceScan::TraceScan(CTraceDoc& document, const CTraceFilter& filter, const TraceScanSetup& setup,
                     std::shared_ptr<PostedStep::Line> line)
    : m_document(document),
      m_line(std::move(line)),
      m_setup(SetupFor(setup, filter)),
      m_filter(filter),
      m_names(std::make_shared<const NameMap>(document.m_names)),
      m_clock(FilterPass::ClockOf(document)),
      m_pass(m_filter, *m_names, m_clock),
      m_begin(document.m_traces.Popped()),
      m_end(m_begin + document.m_traces.size()),
      m_next(m_begin) {
  m_pass.BeginBehind(nullptr);
}

// What the threads have under way ends at their next look. Where that takes long, they are left to
// themselves.
TraceScan::~TraceScan() {
  constexpr std::chrono::milliseconds kMoment(20);
  if (!m_pieces) return;
  m_pieces->Stop();
  m_pieces->WaitForEnd(kMoment);
}

bool TraceScan::GoOn() {
  if (m_pieces || Left() == 0) return m_pieces != nullptr;
  std::shared_ptr<const LentTraces> lent = m_document.Lend();
  if (!lent) return false;
  auto pieces = std::make_shared<Pieces>(*this, std::move(lent));
  if (PieceThreads::Start(pieces, m_setup.threads) == 0) return false;
  m_pieces = std::move(pieces);
  return true;
}

TraceScan::State TraceScan::Take(Clock::time_point until, const Hit& hit, bool wait) {
  ++m_steps;
  if (m_pieces) return TakeFromThreads(until, hit, wait);
  Walk(until, hit);
  return Left() == 0 ? State::Whole : State::More;
}

TraceScan::State TraceScan::TakeFromThreads(Clock::time_point until, const Hit& hit, bool wait) {
  Clock::time_point patience = wait ? until : Clock::time_point();
  while (m_given < m_hits.size() || NextPiece(patience)) {
    patience = {};
    if (GiveSome(hit) && m_pieces->m_results.Taken() == m_pieces->Count()) return State::Whole;
    if (Clock::now() < until) continue;
    // Threads ask only for what has not been there yet.
    m_line->Ask();
    return State::More;
  }
  return m_pieces->HasFailed() ? State::Failed : State::More;
}

bool TraceScan::NextPiece(Clock::time_point patience) {
  std::optional<std::vector<TraceEvent_i*>> next = m_pieces->m_results.Take(patience);
  if (!next) return false;
  m_hits = std::move(*next);
  m_given = 0;
  return true;
}

// True: the piece has been given.
bool TraceScan::GiveSome(const Hit& hit) {
  const std::size_t end = std::min(m_given + kHitsPerLook, m_hits.size());
  while (m_given < end) hit(m_hits[m_given++]);
  if (end < m_hits.size()) return false;
  m_next = m_begin + m_pieces->EndOf(m_pieces->m_results.Taken() - 1);
  return true;
}

void TraceScan::Walk(Clock::time_point until, const Hit& hit) {
  const TraceList_t& traces = m_document.m_traces;
  while (Left() > 0) {
    const auto from = static_cast<std::size_t>(m_next - traces.Popped());
    const auto end =
        from + static_cast<std::size_t>(std::min<std::uint64_t>(m_setup.perLook, Left()));
    traces.ForEachIn(from, end, [&](TraceEvent_i* event) {
      if (m_pass.Matches(*event)) hit(event);
    });
    m_next += end - from;
    if (Clock::now() >= until) return;
  }
}

// What is removed before the walk has come to it passes as if it had never been: only the trace
// after it knows what was before.
void TraceScan::OnTrim(const CTraceHint& oldest) {
  const TraceList_t& traces = m_document.m_traces;
  std::size_t count = 0;
  while (count < oldest.m_events.size() && count < traces.size() &&
         traces[count] == oldest.m_events[count])
    ++count;
  const std::uint64_t first = traces.Popped() + count;
  if (first <= m_next) return;
  m_next = std::min(first, m_end);
  m_pass.BeginBehind(traces[count - 1]);
}

int TraceScan::Thousandths() const {
  return ::Thousandths(m_next - m_begin, m_end - m_begin);
}
