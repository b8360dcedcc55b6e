#include "statistics/trace_count.h"

#include <algorithm>
#include <utility>

#include "workers/ordered_results.h"
#include "workers/piece_threads.h"

class TraceCount::Pieces final : public PieceThreads {
 public:
  Pieces(std::shared_ptr<const CountedTraces> traces, StatField field, std::function<void()> more,
         const TraceCountSetup& setup)
      : PieceThreads((traces->Size() + setup.perPiece - 1) / setup.perPiece),
        m_traces(std::move(traces)),
        m_field(field),
        m_more(std::move(more)),
        m_setup(setup) {}

  class Counting final : public Hand {
   public:
    explicit Counting(Pieces& all)
        : m_all(all), m_reader(all.m_traces->MakeReader()), m_counter(all.m_field) {
      m_events.reserve(all.m_setup.perLook);
    }

    void Do(std::size_t piece) override {
      const std::size_t from = piece * m_all.m_setup.perPiece;
      const std::size_t end = std::min(from + m_all.m_setup.perPiece, m_all.m_traces->Size());
      for (std::size_t at = from; at < end; at += m_all.m_setup.perLook) {
        if (m_all.IsStopped()) return;
        m_events.clear();
        m_reader->Take(at, std::min(at + m_all.m_setup.perLook, end), m_events);
        for (const TraceEvent_i* const event : m_events) m_counter.Add(*event);
      }
      if (m_all.m_results.Put(piece, m_counter.Take())) m_all.OnMore();
    }

   private:
    Pieces& m_all;
    const std::unique_ptr<CountedTraces::Reader> m_reader;
    StatCounter m_counter;
    CountedTraces::Events m_events;
  };

  std::unique_ptr<Hand> MakeHand() override { return std::make_unique<Counting>(*this); }
  void OnFailure() override { OnMore(); }
  void OnMore() const {
    if (m_more) m_more();
  }

  OrderedResults<StatPart> m_results;

 private:
  const std::shared_ptr<const CountedTraces> m_traces;
  const StatField m_field;
  const std::function<void()> m_more;
  const TraceCountSetup m_setup;
};

TraceCount::TraceCount(std::shared_ptr<const CountedTraces> traces, StatField field,
                       std::function<void()> more, const TraceCountSetup& setup)
    : m_table(setup.bounds),
      m_pieces(std::make_shared<Pieces>(std::move(traces), field, std::move(more), setup)) {
  const std::size_t threads = setup.threads > 0 ? setup.threads : PieceThreads::Processors();
  m_alone = PieceThreads::Start(m_pieces, threads) == 0;
}

// What the threads have under way ends at their next look.
TraceCount::~TraceCount() {
  constexpr std::chrono::milliseconds kMoment(20);
  m_pieces->Stop();
  m_pieces->WaitForEnd(kMoment);
}

TraceCount::State TraceCount::Take(Clock::time_point until) {
  // A thread that fails while this waits wakes nobody: so it waits for short whiles.
  constexpr std::chrono::milliseconds kWhile(20);
  if (m_next == m_pieces->Count()) return State::Whole;
  if (m_alone) return TakeAlone(until);
  Clock::time_point patience = std::min(until, Clock::now() + kWhile);
  do {
    while (const auto part = m_pieces->m_results.Take(patience)) {
      m_table.Join(*part);
      if (++m_next == m_pieces->Count()) return State::Whole;
      if (Clock::now() >= until) return State::More;
      patience = {};
    }
    if (m_pieces->HasFailed()) return State::Failed;
    patience = std::min(until, Clock::now() + kWhile);
  } while (Clock::now() < until);
  return State::More;
}

TraceCount::State TraceCount::TakeAlone(Clock::time_point until) {
  const std::unique_ptr<Pieces::Counting> hand = std::make_unique<Pieces::Counting>(*m_pieces);
  do {
    hand->Do(m_next);
    m_table.Join(*m_pieces->m_results.Take());
    if (++m_next == m_pieces->Count()) return State::Whole;
  } while (Clock::now() < until);
  return State::More;
}

int TraceCount::Thousandths() const {
  const std::size_t all = m_pieces->Count();
  return all == 0 ? 1000 : static_cast<int>(m_next * 1000 / all);
}
