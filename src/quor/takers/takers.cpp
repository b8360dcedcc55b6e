#include "quor/takers/takers.h"

#include <algorithm>

#include "base/fail_with.h"
#include "quor/log/log.h"

namespace {

using namespace quor::wire;
constexpr std::size_t kIdBytes = 16;

}  // namespace

Takers::Takers(asio::io_context& io, Hub& hub, TakerLimits limits)
    : m_hub(hub), m_limits(limits), m_parts(hub.Names()), m_timer(io) {}

Takers::~Takers() {
  if (!m_streams.empty()) m_hub.Remove(*this);
}

std::shared_ptr<TakerStream> Takers::Open(const std::string& owner, const std::string& who,
                                          const Take& take, ErrorCode* code, std::string* why) {
  const auto fail = [&](ErrorCode reason, const std::string& text) {
    *code = reason;
    return FailWith(why, text, nullptr);
  };
  if (take.stream().size() != kIdBytes)
    return fail(ERROR_BAD_REQUEST, "a stream that is taken needs an id of 16 bytes");
  const Key key{owner, take.stream()};
  if (const auto known = m_streams.find(key); known != m_streams.end()) {
    std::string reason;
    const auto stream = known->second;
    return stream->GoOn(take.taken(), who, &reason) ? stream : fail(ERROR_BAD_REQUEST, reason);
  }
  if (!take.begins() || take.taken() > 0)
    return fail(ERROR_UNKNOWN_STREAM,
                "the stream is not known here: the service was started anew, or the stream has "
                "waited too long");
  if (!MakeRoom())
    return fail(ERROR_LIMIT, "there are " + std::to_string(m_streams.size()) +
                                 " takers already, and no more are allowed here");
  m_hub.Seal();
  m_hub.Deliver();
  if (m_streams.empty()) m_hub.Add(*this);
  auto stream = std::make_shared<TakerStream>(m_hub, who, take.stream(), m_limits.storeBytes);
  m_streams[key] = stream;
  Await();
  return stream;
}

bool Takers::MakeRoom() {
  if (m_streams.size() < m_limits.streams) return true;
  const TakerStream* longest = nullptr;
  for (const auto& [key, stream] : m_streams)
    if (!stream->IsConnected() && (!longest || stream->LeftAt() < longest->LeftAt()))
      longest = stream.get();
  if (!longest) return false;
  Forget(*longest, "another taker needs its place");
  return m_streams.size() < m_limits.streams;
}

void Takers::Leave(TakerStream& stream, const Connection& connection) {
  stream.Leave(connection);
  Await();
}

void Takers::Forget(const TakerStream& stream, const std::string& because) {
  const auto known = std::find_if(m_streams.begin(), m_streams.end(),
                                  [&](const auto& one) { return one.second.get() == &stream; });
  if (known == m_streams.end()) return;
  const std::uint64_t kept = stream.KeptTraces();
  m_dropped += stream.Dropped() + kept;
  Log(kept == 0 ? LogLevel::Info : LogLevel::Warning,
      "the stream of " + stream.Who() + " is forgotten: " + because + "; " + std::to_string(kept) +
          " traces were not confirmed");
  m_streams.erase(known);
  if (m_streams.empty()) m_hub.Remove(*this);
}

void Takers::ForgetAway() {
  const auto streams = m_streams;
  for (const auto& [key, stream] : streams)
    if (!stream->IsConnected() && TakerStream::Clock::now() - stream->LeftAt() >= m_limits.away)
      Forget(*stream, "it has not come back");
}

void Takers::Await() {
  auto next = TakerStream::Clock::time_point::max();
  for (const auto& [key, stream] : m_streams)
    if (!stream->IsConnected()) next = std::min(next, stream->LeftAt() + m_limits.away);
  if (next == TakerStream::Clock::time_point::max()) return;
  m_timer.expires_at(next);
  m_timer.async_wait([this](const std::error_code& error) {
    if (error) return;
    ForgetAway();
    Await();
  });
}

// Processes that come and go use the names up in days, and a stream that is taken never ends.
void Takers::RenewNames() {
  if (!m_hub.Names().IsFull() || m_hub.HasOpenBatch() || m_hub.HasOthers(*this)) return;
  const auto isIdle = [](const auto& one) { return one.second->IsIdle(); };
  if (!std::all_of(m_streams.begin(), m_streams.end(), isIdle)) return;
  m_hub.Remove(*this);
  m_hub.Add(*this);
  for (const auto& [key, stream] : m_streams) stream->ForgetNames();
}

void Takers::OnBatch(const SharedBatch& batch) {
  for (const SharedBatch& part : m_parts.Of(batch))
    for (const auto& [key, stream] : m_streams) stream->Push(part);
}

void Takers::OnDelivered() {
  for (const auto& [key, stream] : m_streams) stream->Pump();
}

std::uint64_t Takers::Dropped() const {
  std::uint64_t dropped = m_dropped;
  for (const auto& [key, stream] : m_streams) dropped += stream->Dropped();
  return dropped;
}

void Takers::FillStatus(Status* status) const {
  const auto now = TakerStream::Clock::now();
  for (const auto& [key, stream] : m_streams) {
    Status::Taker* const line = status->add_takers();
    line->set_who(stream->Who());
    line->set_stream(stream->Id());
    line->set_connected(stream->IsConnected());
    line->set_frames(stream->Taken());
    line->set_traces(stream->KeptTraces());
    line->set_bytes(stream->KeptBytes());
    line->set_dropped(stream->Dropped());
    if (stream->IsConnected()) continue;
    const auto away = std::chrono::duration_cast<std::chrono::seconds>(now - stream->LeftAt());
    line->set_away(static_cast<std::uint64_t>(away.count()));
  }
}

void Takers::Stop() {
  m_timer.cancel();
  for (const auto& [key, stream] : m_streams) {
    stream->Flush();
    if (const std::uint64_t kept = stream->KeptTraces(); kept > 0)
      Log(LogLevel::Warning, "ending with " + std::to_string(kept) + " traces that " +
                                 stream->Who() + " has not confirmed");
  }
}
