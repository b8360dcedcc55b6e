#include "quor/otlp/feed/otlp_feed.h"

#include <google/protobuf/arena.h>

#include <utility>

namespace {

using std::chrono::steady_clock;
constexpr std::chrono::seconds kTickEvery{1};
constexpr unsigned kWhileAway = 2, kWhileBusy = 1;  // seconds

std::uint64_t UnixNs() {
  using namespace std::chrono;
  return static_cast<std::uint64_t>(
      duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count());
}

}  // namespace

OtlpFeed::OtlpFeed(asio::io_context& io, std::shared_ptr<Forwarder> forwarder,
                   const OtlpRules& rules)
    : m_forwarder(std::move(forwarder)), m_mapper(*this, rules), m_tick(io), m_patience(io) {
  m_forwarder->RenewNamesAt(kNamesMost);
  m_forwarder->OnSettled([this] { OnSettled(); });
}

void OtlpFeed::Start() {
  m_tick.expires_after(kTickEvery);
  m_tick.async_wait([this](const std::error_code& error) {
    if (error || m_finished) return;
    Tick();
    Start();
  });
}

void OtlpFeed::Tick() {
  m_mapper.Tick(steady_clock::now().time_since_epoch());
  HandOver();
}

std::string OtlpFeed::WhyFull() {
  if (m_finished) return "the receiver ends";
  if (!m_forwarder->IsReached())
    return "the trace service of this machine is not reached: " + m_forwarder->Trouble();
  if (m_forwarder->StoredBytes() > kUnconfirmedBytes) return "too much is on its way already";
  if (m_forwarder->NamesAreUsed()) return "its names are renewed";
  return {};
}

template <class Message>
bool OtlpFeed::Map(Bytes body, const std::string& machine) {
  google::protobuf::Arena arena;
  auto* const message = google::protobuf::Arena::CreateMessage<Message>(&arena);
  if (!message->ParseFromArray(body.data(), static_cast<int>(body.size()))) return false;
  m_mapper.Take(*message, {machine, UnixNs(), steady_clock::now().time_since_epoch()});
  return true;
}

void OtlpFeed::Take(OtlpSignal signal, Bytes body, const std::string& machine, Done done) {
  if (std::string why = WhyFull(); !why.empty())
    return done({OtlpVerdict::Kind::Full, 0, std::move(why),
                 m_forwarder->IsReached() ? kWhileBusy : kWhileAway});
  const bool isMapped = signal == OtlpSignal::Logs ? Map<quor::otlp::ExportLogs>(body, machine)
                                                   : Map<quor::otlp::ExportSpans>(body, machine);
  if (!isMapped)
    return done({OtlpVerdict::Kind::Malformed, 0, "the body is no message of this kind", 0});
  HandOver();
  const Hub& hub = m_forwarder->Traces();
  m_waiting.push_back({hub.Taken() + hub.Lost(), std::move(done)});
  OnSettled();
}

void OtlpFeed::OnRecord(const OtlpSource& source, const OtlpRecord& record) {
  std::unique_ptr<FeedProcess>& process = m_processes[&source];
  if (!process) process = std::make_unique<FeedProcess>(m_forwarder->Traces(), source);
  process->Take(record);
}

void OtlpFeed::HandOver() {
  m_forwarder->Traces().Seal();
  m_forwarder->Traces().Deliver();
}

// What is confirmed is confirmed from the front, whichever body it is of.
void OtlpFeed::OnSettled() {
  while (!m_waiting.empty() && m_waiting.front().until <= m_forwarder->Settled()) {
    const Done done = std::move(m_waiting.front().done);
    m_waiting.pop_front();
    done({});
  }
  const Hub& hub = m_forwarder->Traces();
  if (m_finished && m_forwarder->Settled() >= hub.Taken() + hub.Lost())
    std::exchange(m_finished, [] {})();
}

void OtlpFeed::Finish(std::chrono::milliseconds patience, std::function<void()> done) {
  m_finished = std::move(done);
  m_tick.cancel();
  m_mapper.Flush();
  HandOver();
  m_patience.expires_after(patience);
  m_patience.async_wait([this](const std::error_code& error) {
    if (!error) std::exchange(m_finished, [] {})();
  });
  OnSettled();
}
