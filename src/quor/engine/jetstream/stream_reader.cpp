#include "quor/engine/jetstream/stream_reader.h"

#include "base/fail_with.h"

using Clock = std::chrono::steady_clock;

bool StreamReader::Bus::Send(const std::string& subject, const std::string& reply,
                             const std::string& body, std::string* why) {
  const Bytes bytes(reinterpret_cast<const std::uint8_t*>(body.data()), body.size());
  return m_link.Send(subject, reply, bytes, "", nullptr, why);
}

std::unique_ptr<StreamReader> StreamReader::Make(NatsLink& link, PullTarget target, std::size_t cut,
                                                 std::string* why) {
  static std::atomic<unsigned> count{0};
  // The random word of the inbox: nobody else may guess the names of the consumers.
  const std::string word = link.Inbox().substr(link.Inbox().rfind('.') + 1);
  const std::string number = std::to_string(++count);
  target.consumer = "r" + number + "-" + word + "-";
  target.inbox = link.Inbox() + ".r" + number;
  const std::string inbox = target.inbox;
  std::unique_ptr<StreamReader> reader(new StreamReader(link, std::move(target), cut));
  auto* const self = reader.get();
  const auto heard = [self](BusMessage message) {
    std::lock_guard lock(self->m_mutex);
    self->m_loop.OnMessage(Clock::now(), std::move(message));
    self->m_came.notify_all();
  };
  reader->m_subscription = NatsSubscription::Make(link, inbox + ".>", heard, why);
  if (!reader->m_subscription) return nullptr;
  return reader;
}

StreamReader::~StreamReader() {
  m_subscription.reset();
}

void StreamReader::Wake() {
  std::lock_guard lock(m_mutex);
  m_woken = true;
  m_came.notify_all();
}

EngineReader::State StreamReader::Next(std::chrono::milliseconds deadline,
                                       std::vector<EngineMessage>& messages, std::string* why) {
  const auto end = Clock::now() + deadline;
  std::unique_lock lock(m_mutex);
  while (true) {
    const auto due = m_loop.Tick(Clock::now());
    if (m_loop.Take(messages)) {
      for (auto& message : messages) message.subject.erase(0, m_cut);
      return State::Messages;
    }
    if (m_loop.TakeAnew(why)) return State::BegunAnew;
    if (std::exchange(m_woken, false)) return State::Quiet;
    if (Clock::now() >= end) break;
    m_came.wait_until(lock, std::min(due, end));
  }
  if (m_loop.Broken().empty()) return State::Quiet;
  return FailWith(why, m_loop.Broken(), State::Broken);
}
