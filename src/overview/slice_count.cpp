#include "overview/slice_count.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "overview/far_times.h"
#include "workers/piece_threads.h"

class SliceCount::Pieces final : public PieceThreads {
 public:
  Pieces(std::shared_ptr<const CountedTraces> traces, LossNames losses, const TimeLimits& limits,
         std::vector<PieceTimes> times, bool areKnown, std::size_t perLook)
      : PieceThreads(times.size()),
        m_traces(std::move(traces)),
        m_losses(std::move(losses)),
        m_areKnown(areKnown),
        m_perLook(perLook),
        m_times(std::move(times)),
        m_slices(limits) {}

  class Counting final : public Hand {
   public:
    explicit Counting(Pieces& all)
        : m_all(all),
          m_traces(all.m_traces->MakeReader()),
          m_reader(all.m_losses),
          m_slices(all.m_slices.Limits()) {
      m_events.reserve(all.m_perLook);
    }

    void Do(std::size_t piece) override {
      PieceTimes times = m_all.m_times[piece];
      m_slices.Empty();
      if (m_all.m_areKnown && !times.Overlaps(m_slices.Limits()))
        PassOver(times);
      else if (!Count(times))
        return;
      const std::lock_guard lock(m_all.m_mutex);
      m_all.m_times[piece] = times;
      m_all.m_slices.Join(m_slices);
      if (++m_all.m_done == m_all.Count()) m_all.m_news.notify_one();
    }

   private:
    void PassOver(const PieceTimes& times) {
      m_slices.AddWithoutTime(times.withoutTime);
      if (times.timed == 0) return;
      if (times.last < m_slices.Limits().from)
        m_slices.AddBefore(times.timed, times.last);
      else
        m_slices.AddBehind(times.timed, times.first);
    }
    // False: it was stopped.
    bool Count(PieceTimes& times) {
      PieceTimes seen{times.from, times.end};
      for (std::size_t at = times.from; at < times.end; at += m_all.m_perLook) {
        if (m_all.IsStopped()) return false;
        m_events.clear();
        m_traces->Take(at, std::min(at + m_all.m_perLook, times.end), m_events);
        m_reader.ReadEach(m_events, [&](const SlicedTrace& trace) {
          m_slices.Add(trace);
          if (trace.time == TraceTimes::kNone) return;
          ++seen.timed;
          seen.first = std::min(seen.first, trace.time);
          seen.last = std::max(seen.last, trace.time);
        });
        seen.withoutTime += static_cast<std::uint32_t>(m_events.size());
      }
      seen.withoutTime -= seen.timed;
      times = seen;
      return true;
    }

    Pieces& m_all;
    const std::unique_ptr<CountedTraces::Reader> m_traces;
    SlicedReader m_reader;
    TimeSlices m_slices;
    CountedTraces::Events m_events;
  };

  std::unique_ptr<Hand> MakeHand() override { return std::make_unique<Counting>(*this); }
  void OnFailure() override {
    const std::lock_guard lock(m_mutex);
    m_news.notify_one();
  }
  // Waits until then for the end of all pieces, and copies what is counted.
  bool WaitAndCopy(Clock::time_point until, TimeSlices& slices) {
    std::unique_lock lock(m_mutex);
    m_news.wait_until(lock, until, [&] { return m_done == Count() || HasFailed(); });
    slices = m_slices;
    return m_done == Count();
  }
  std::size_t Done() const {
    const std::lock_guard lock(m_mutex);
    return m_done;
  }
  // REQUIRES: all pieces are done.
  std::vector<PieceTimes> TakeTimes() { return std::move(m_times); }

 private:
  const std::shared_ptr<const CountedTraces> m_traces;
  const LossNames m_losses;
  const bool m_areKnown;
  const std::size_t m_perLook;
  mutable std::mutex m_mutex;
  std::condition_variable m_news;
  std::vector<PieceTimes> m_times;  // each is read and written by the thread that has its piece
  TimeSlices m_slices;
  std::size_t m_done = 0;
};

namespace {

std::vector<PieceTimes> EqualPieces(std::size_t traces, const SliceCountSetup& setup) {
  const std::size_t size =
      std::max(setup.perPiece, (traces + setup.mostPieces - 1) / setup.mostPieces);
  std::vector<PieceTimes> pieces;
  for (std::size_t from = 0; from < traces; from += size)
    pieces.push_back({from, std::min(from + size, traces)});
  return pieces;
}

}  // namespace

SliceCount::SliceCount(std::shared_ptr<const CountedTraces> traces, LossNames losses,
                       SliceCountSetup setup)
    : m_traces(std::move(traces)),
      m_losses(std::move(losses)),
      m_setup(std::move(setup)),
      m_mayNarrow(!m_setup.limits) {
  Begin();
}

// What the threads have under way ends at their next look.
SliceCount::~SliceCount() {
  constexpr std::chrono::milliseconds kMoment(20);
  if (!m_pieces) return;
  m_pieces->Stop();
  m_pieces->WaitForEnd(kMoment);
}

void SliceCount::Begin() {
  const bool areKnown = m_setup.known != nullptr;
  m_pieces =
      std::make_shared<Pieces>(m_traces, m_losses, m_setup.limits.value_or(TimeLimits()),
                               areKnown ? *m_setup.known : EqualPieces(m_traces->Size(), m_setup),
                               areKnown, m_setup.perLook);
  const std::size_t threads = m_setup.threads > 0 ? m_setup.threads : PieceThreads::Processors();
  m_alone = PieceThreads::Start(m_pieces, threads) == 0;
}

SliceCount::State SliceCount::Take(Clock::time_point until) {
  while (m_pieces) {
    if (m_alone) {
      const std::unique_ptr<Pieces::Counting> hand = std::make_unique<Pieces::Counting>(*m_pieces);
      for (std::size_t done = m_pieces->Done(); done < m_pieces->Count(); ++done) {
        hand->Do(done);
        if (Clock::now() >= until) break;
      }
    }
    const bool whole = m_pieces->WaitAndCopy(until, m_slices);
    if (m_pieces->HasFailed()) return State::Failed;
    if (!whole) return State::More;
    Finish();
  }
  return State::Whole;
}

// Counts once more where that makes the slices narrower: only the pieces near them.
void SliceCount::Finish() {
  m_setup.known = std::make_shared<const std::vector<PieceTimes>>(m_pieces->TakeTimes());
  m_pieces = nullptr;
  const auto better = m_mayNarrow ? BetterLimits(m_slices) : std::nullopt;
  if (!better) return;
  m_setup.limits = better;
  Begin();
}

int SliceCount::Thousandths() const {
  const std::size_t all = m_pieces ? m_pieces->Count() : 0;
  return all == 0 ? 1000 : static_cast<int>(m_pieces->Done() * 1000 / all);
}
