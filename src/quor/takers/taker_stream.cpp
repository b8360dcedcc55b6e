#include "quor/takers/taker_stream.h"

#include <algorithm>
#include <utility>

#include "base/fail_with.h"

namespace {

constexpr std::size_t kInFlightBytes = 1u << 20;  // waits for the socket
constexpr std::size_t kFlushBytes = 16u << 20;

std::size_t WindowOf(std::size_t storeBytes) {
  return std::min(TakerStream::kWindowBytes, storeBytes / 2);
}

}  // namespace

TakerStream::TakerStream(Hub& hub, std::string who, std::string id, std::size_t storeBytes)
    : m_hub(hub),
      m_who(std::move(who)),
      m_id(std::move(id)),
      m_window(WindowOf(storeBytes)),
      m_queue(hub.Names(), {storeBytes - m_window, 0, "they were not taken in time", true}),
      m_forgotten(hub.Forgotten()) {
  m_queue.Begin(hub.Sources());
}

bool TakerStream::Confirm(std::uint64_t frames, std::string* why) {
  const auto count = [this](const Batch& batch) {
    for (const auto& source : batch.forgotten) m_forgotten += source->serial;
  };
  return m_kept.Take(frames, count) || FailWith(why, "it gives back what it had taken");
}

bool TakerStream::Take(std::uint64_t frames, std::string* why) {
  if (frames > m_sent) return FailWith(why, "it has taken frames that were not sent");
  if (!Confirm(frames, why)) return false;
  Pump();
  return true;
}

bool TakerStream::GoOn(std::uint64_t taken, const std::string& who, std::string* why) {
  if (taken > m_kept.Sent()) return FailWith(why, "it has taken frames that were never sent");
  const auto replaced = std::exchange(m_onReplaced, nullptr);
  m_connection = nullptr;
  m_leftAt = Clock::now();
  if (replaced) replaced();
  m_who = who;
  return Confirm(std::max(taken, m_kept.Taken()), why);
}

void TakerStream::Start(Connection& connection, std::function<void()> onReplaced) {
  m_connection = &connection;
  m_onReplaced = std::move(onReplaced);
  // Names and counts begin anew, so what is kept is written anew.
  m_queue.Restart(m_kept.Withdraw());
  m_sent = m_kept.Taken();
  quor::wire::Ledger ledger = m_queue.WholeLedger();
  ledger.set_forgotten(m_forgotten);
  connection.Send(FrameType::Ledger, ledger);
  Outgoing out;
  while (m_queue.HasAgain() && m_queue.Next(out)) m_kept.Keep(out);
  Pump();
}

void TakerStream::Leave(const Connection& connection) {
  if (m_connection != &connection) return;
  m_connection = nullptr;
  m_onReplaced = nullptr;
  m_leftAt = Clock::now();
}

bool TakerStream::SendNext() {
  const Outgoing& frame = m_kept.Frames()[m_sent - m_kept.Taken()];
  if (!frame.records->empty() && !m_connection->SendData(frame.names, frame.records)) return false;
  if (!m_connection->Send(FrameType::Ledger, frame.ledger)) return false;
  ++m_sent;
  return true;
}

void TakerStream::PumpUpTo(std::size_t queued, std::size_t window) {
  Outgoing out;
  while (m_connection && m_connection->IsOpen() && m_connection->QueuedBytes() < queued) {
    if (m_sent == m_kept.Sent()) {
      if (m_kept.Bytes() >= window || !m_queue.Next(out)) return;
      m_kept.Keep(out);
    }
    if (!SendNext()) return;
  }
}

void TakerStream::Pump() {
  PumpUpTo(kInFlightBytes, m_window);
}

void TakerStream::Flush() {
  PumpUpTo(kFlushBytes, kFlushBytes);
}
