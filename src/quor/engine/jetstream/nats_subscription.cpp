#include <nats/nats.h>

#include <charconv>

#include "base/fail_with.h"
#include "quor/engine/jetstream/nats_link.h"

namespace {

std::string HeaderOf(natsMsg* message, const char* key) {
  const char* value = nullptr;
  return natsMsgHeader_Get(message, key, &value) == NATS_OK && value ? value : "";
}

std::uint64_t NumberOf(const std::string& text) {
  std::uint64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

BusMessage MessageOf(natsMsg* message) {
  BusMessage out;
  out.subject = natsMsg_GetSubject(message);
  if (const char* reply = natsMsg_GetReply(message)) out.reply = reply;
  const auto* body = reinterpret_cast<const std::uint8_t*>(natsMsg_GetData(message));
  out.body.assign(body, body + natsMsg_GetDataLength(message));
  out.id = HeaderOf(message, "Nats-Msg-Id");
  out.operation = HeaderOf(message, "KV-Operation");
  // Only words of the engine have no body.
  if (!out.body.empty()) return out;
  out.status = int(NumberOf(HeaderOf(message, "Status")));
  out.description = HeaderOf(message, "Description");
  out.lastConsumer = NumberOf(HeaderOf(message, "Nats-Last-Consumer"));
  return out;
}

}  // namespace

std::unique_ptr<NatsSubscription> NatsSubscription::Make(NatsLink& link, const std::string& subject,
                                                         Handler handler, std::string* why) {
  std::unique_ptr<NatsSubscription> made(new NatsSubscription(link, subject, std::move(handler)));
  std::lock_guard lock(link.m_subscribing);
  if (const auto connection = link.Now(); connection && !made->Open(connection, why))
    return nullptr;
  link.m_subscriptions.insert(made.get());
  return made;
}

// With the link's list held. A connection that was closed meanwhile is made again, and so is this.
bool NatsSubscription::Open(const NatsLink::Connection& connection, std::string* why) {
  const auto call = [](natsConnection*, natsSubscription*, natsMsg* message, void* subscription) {
    const std::unique_ptr<natsMsg, void (*)(natsMsg*)> end(message, natsMsg_Destroy);
    static_cast<NatsSubscription*>(subscription)->m_handler(MessageOf(message));
  };
  const auto complete = [](void* subscription) {
    auto* const self = static_cast<NatsSubscription*>(subscription);
    std::lock_guard lock(self->m_mutex);
    self->m_complete = true;
    self->m_ended.notify_all();
  };
  auto status =
      natsConnection_Subscribe(&m_subscription, connection.get(), m_subject.c_str(), call, this);
  if (status == NATS_OK) status = natsSubscription_SetOnCompleteCB(m_subscription, complete, this);
  if (status == NATS_OK || status == NATS_CONNECTION_CLOSED) return true;
  return FailWith(why, natsStatus_GetText(status));
}

void NatsSubscription::Close() {
  if (!m_subscription) return;
  natsSubscription_Unsubscribe(m_subscription);
  {
    std::unique_lock lock(m_mutex);
    m_ended.wait(lock, [&] { return m_complete; });
    m_complete = false;
  }
  natsSubscription_Destroy(std::exchange(m_subscription, nullptr));
}

NatsSubscription::~NatsSubscription() {
  {
    std::lock_guard lock(m_link.m_subscribing);
    m_link.m_subscriptions.erase(this);
  }
  Close();
}
