#include "quor/otlp/send/frame_sender.h"

#include <algorithm>

#include "quor/otlp/out/out_state.pb.h"
#include "quor/otlp/send/frame_traces.h"

namespace {

constexpr std::uint32_t kFormat = 1;
constexpr std::uint64_t kRequestsOfMark = 64;
constexpr std::size_t kMarkBytes = 16u << 20;
constexpr std::size_t kToldReasons = 64;

}  // namespace

FrameSender::FrameSender(std::string machine, const SendLimits& limits, Tell tell, unsigned seed)
    : m_limits(limits),
      m_tell(std::move(tell)),
      m_queue(
          limits, [this](SendLoss loss) { Lose(std::move(loss)); }, seed),
      m_requests([this](OutRequest request) { m_queue.Add(std::move(request)); }),
      m_sources(std::move(machine)) {}

bool FrameSender::Resume(const std::string& bytes) {
  quor::otlp::out::State state;
  if (!state.ParseFromString(bytes) || state.format() != kFormat) return false;
  if (state.stream().size() != 16 || !m_sources.Load(state)) return false;
  m_stream = state.stream();
  m_frames = m_confirmed = state.frames();
  for (const auto& loss : state.losses())
    m_losses.push_back({0, loss.traces(), loss.reason(), kNever});
  return true;
}

void FrameSender::BeginStream(const std::string& id, Time now) {
  if (id == m_stream) return;
  if (!m_stream.empty()) {
    // What is open there gets no End by a frame of this one.
    m_sources.Lose(0, "", m_requests);
    Flush(now);
  }
  m_stream = id;
  m_frames = m_confirmed = 0;
  Flush(now);  // a later process is to know the stream from its beginning
}

void FrameSender::Add(const TakenFrame& frame, Time now) {
  if (frame.number <= m_frames) return;  // the state that was resumed has it
  ReportLosses();
  Send(frame);
  m_frames = frame.number;
  if (!m_flushAt) m_flushAt = now + m_limits.batch;
  if (m_queue.Added() - m_lastMark >= kRequestsOfMark && HasRoomForMark()) Flush(now);
}

void FrameSender::Send(const TakenFrame& frame) {
  FrameTraces traces(frame);
  OutFrame out;
  out.instance = frame.instance;
  out.serial = frame.serial;
  out.delivered = frame.delivered;
  out.lost = frame.lost;
  out.traces = traces.All();
  m_sources.Take(out, m_requests);
  for (const std::string& instance : frame.forgotten) m_sources.Forget(instance, m_requests);
}

void FrameSender::AddGap(std::uint64_t traces, Time now) {
  m_sources.Lose(traces, "the service was started anew", m_requests);
  if (!m_flushAt) m_flushAt = now + m_limits.batch;
}

void FrameSender::ReportLosses() {
  // A report may fill a request, and so let another one be dropped: what that loses comes behind.
  const std::size_t known = m_losses.size();
  for (std::size_t i = 0; i < known; ++i) {
    if (m_losses[i].reported != kNever) continue;
    m_losses[i].reported = kOpen;
    const Loss loss = m_losses[i];
    m_sources.TellLost(loss.traces, loss.reason, m_requests);
  }
}

// Marks wait for as long as the collector is away, and each has all open blocks.
bool FrameSender::HasRoomForMark() const {
  return m_marks.empty() || m_markBytes + m_sources.Open().bytes <= kMarkBytes;
}

void FrameSender::Flush(Time now) {
  m_requests.Flush();
  m_flushAt.reset();
  if (HasRoomForMark())
    SetMark();
  else
    m_flushAt = now + m_limits.batch;
}

void FrameSender::SetMark() {
  quor::otlp::out::State sources;
  m_sources.Save(sources);
  Mark mark{m_queue.Added(), m_stream, m_frames, sources.SerializeAsString()};
  m_markBytes += mark.sources.size();
  m_lastMark = mark.number;
  for (Loss& loss : m_losses)
    if (loss.reported == kOpen) loss.reported = mark.number;
  m_marks.push_back(std::move(mark));
}

const SendQueue::Request* FrameSender::Next(Time now) {
  if (m_flushAt && now >= *m_flushAt) Flush(now);
  return m_queue.Next(now);
}

void FrameSender::Answer(const HttpResult& result, Time now, std::time_t date) {
  m_queue.Answer(result, now, date);
}

std::optional<FrameSender::Time> FrameSender::WakeAt() const {
  const auto send = m_queue.WakeAt();
  if (!send || !m_flushAt) return send ? send : m_flushAt;
  return std::min(*send, *m_flushAt);
}

void FrameSender::Lose(SendLoss loss) {
  m_lost += loss.traces;
  if (m_told.size() < kToldReasons && m_told.insert(loss.reason).second)
    m_tell(std::to_string(loss.traces) + " traces lost: " + loss.reason +
           (loss.words.empty() ? "" : ": " + loss.words));
  m_losses.push_back({loss.number, loss.traces, std::move(loss.reason), kNever});
}

// A later sender makes the requests behind the mark again: their losses and reports are its own.
std::string FrameSender::StateAt(const Mark& mark) const {
  quor::otlp::out::State state;
  state.set_format(kFormat);
  state.set_stream(mark.stream);
  state.set_frames(mark.frames);
  for (const Loss& loss : m_losses) {
    if (loss.number >= mark.number || loss.reported <= mark.number) continue;
    state.add_losses()->set_traces(loss.traces);
    state.mutable_losses()->rbegin()->set_reason(loss.reason);
  }
  return state.SerializeAsString() + mark.sources;  // messages that are joined are one message
}

std::optional<FrameSender::Stored> FrameSender::TakeState() {
  std::optional<Mark> reached;
  while (!m_marks.empty() && m_marks.front().number <= m_queue.Done()) {
    m_markBytes -= m_marks.front().sources.size();
    reached = std::move(m_marks.front());
    m_marks.pop_front();
  }
  if (!reached) return std::nullopt;
  Stored stored{reached->stream, reached->frames, StateAt(*reached)};
  std::erase_if(m_losses, [&](const Loss& loss) { return loss.reported <= reached->number; });
  if (stored.stream == m_stream) m_confirmed = stored.frames;
  return stored;
}

std::uint64_t FrameSender::Unreported() const {
  std::uint64_t sum = 0;
  for (const Loss& loss : m_losses)
    if (loss.reported == kNever) sum += loss.traces;
  return sum;
}

bool FrameSender::IsIdle() const {
  return !m_flushAt && m_marks.empty() && m_queue.Done() == m_queue.Added();
}
