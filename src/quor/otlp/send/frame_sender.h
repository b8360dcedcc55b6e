// The frames of a service on their way to a collector, and what may be confirmed of them.
//
// Shape    Frames become requests, which wait in a queue. Now and then a mark is set behind them: a
//          number of frames, and the state behind these. When all requests before a mark are done,
//          its state is given out, and once it is stored the frames may be confirmed. A sender that
//          resumes that state makes the same messages of the frames that follow. What a sender had
//          sent behind its last state is sent twice, with the same ids.
//          What was lost on the way rides as a report with the next frame, so that
//            serials covered = logs + 2 * whole spans + unfinished spans + sum of quor.lost
//          holds of what the collector has. Until it is reported it is part of the state.
// Errors   Told once for each reason, in words.
// Threads  One at a time. Time is what its user says.
#pragma once

#include <deque>
#include <set>

#include "quor/client/taker/taken_reader.h"
#include "quor/otlp/out/out_sources.h"
#include "quor/otlp/send/send_queue.h"

class FrameSender {
 public:
  using Time = SendQueue::Time;
  using Tell = std::function<void(const std::string&)>;

  // `machine`: of traces that nobody has named.
  FrameSender(std::string machine, const SendLimits& limits, Tell tell, unsigned seed);

  // Goes on behind a state that was given out. REQUIRES: nothing was added. False: it is none, and
  // nothing has happened.
  bool Resume(const std::string& state);
  // The service's stream with this id begins, or goes on if it is that of the state.
  void BeginStream(const std::string& id, Time now);
  void Add(const TakenFrame& frame, Time now);
  // So many traces are in no frame of any stream.
  void AddGap(std::uint64_t traces, Time now);
  // Nothing waits for further messages any more.
  void Flush(Time now);

  // As those of the queue. They flush what has waited long enough.
  const SendQueue::Request* Next(Time now);
  void Answer(const HttpResult& result, Time now, std::time_t date);
  std::optional<Time> WakeAt() const;

  struct Stored {
    std::string stream;
    std::uint64_t frames = 0;  // that may be confirmed, once it is stored
    std::string bytes;
  };
  // Nothing: the last one still holds.
  std::optional<Stored> TakeState();
  // Of the stream that goes on, those that were confirmed.
  std::uint64_t Confirmed() const { return m_confirmed; }
  const std::string& Stream() const { return m_stream; }

  const SendQueue& Queue() const { return m_queue; }
  std::uint64_t Lost() const { return m_lost; }  // on the way, in traces, each time
  std::uint64_t Unreported() const;              // of them
  bool IsIdle() const;                           // all that was added is done and given out

 private:
  static constexpr std::uint64_t kOpen = ~std::uint64_t{0} - 1, kNever = ~std::uint64_t{0};
  struct Loss {
    std::uint64_t number = 0, traces = 0;
    std::string reason;
    std::uint64_t reported = kNever;  // before this mark; kOpen: before the next one
  };
  struct Mark {
    std::uint64_t number = 0;  // of the first request behind it
    std::string stream;
    std::uint64_t frames = 0;
    std::string sources;
  };
  void Send(const TakenFrame& frame);
  void ReportLosses();
  bool HasRoomForMark() const;
  void SetMark();
  void Lose(SendLoss loss);
  std::string StateAt(const Mark& mark) const;

  const SendLimits m_limits;
  const Tell m_tell;
  SendQueue m_queue;
  OutRequests m_requests;
  OutSources m_sources;
  std::string m_stream;
  std::uint64_t m_frames = 0, m_confirmed = 0, m_lost = 0;
  std::deque<Mark> m_marks;
  std::size_t m_markBytes = 0;
  std::uint64_t m_lastMark = 0;
  std::optional<Time> m_flushAt;
  std::vector<Loss> m_losses;
  std::set<std::string> m_told;
};
