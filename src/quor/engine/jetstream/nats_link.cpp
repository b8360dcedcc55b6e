#include "quor/engine/jetstream/nats_link.h"

#include <nats/nats.h>
#include <sys/stat.h>

#include <random>

#include "base/fail_with.h"

namespace {

// Above this a message is held up by a server that does not read.
constexpr int kWriteMilliseconds = 5000;
constexpr int kReconnectMilliseconds = 250, kJitterMilliseconds = 250;
constexpr int kPingMilliseconds = 5000;
// Between two attempts of a new connection.
constexpr std::chrono::milliseconds kPause{250}, kLongestPause{2000};

std::string RandomWord() {
  std::random_device random;
  std::string word;
  for (int i = 0; i < 24; i++) word += "0123456789abcdefghijklmnopqrstuv"[random() % 32];
  return word;
}

bool IsLoopback(const std::string& server) {
  const std::string host = server.substr(0, server.rfind(':'));
  // A name may begin with 127, too.
  const bool number = host.find_first_not_of("0123456789.") == host.npos;
  return host == "localhost" || host == "[::1]" || (number && host.starts_with("127."));
}

bool FailNats(std::string* why, natsStatus status) {
  return FailWith(why, natsStatus_GetText(status));
}

std::string LastErrorOf(natsConnection* connection, const std::string& otherwise) {
  const char* error = nullptr;
  natsConnection_GetLastError(connection, &error);
  return error && *error ? error : otherwise;
}

// What the last call on this thread says of why it failed.
std::string LastReason(natsStatus status) {
  const char* const last = nats_GetLastError(nullptr);
  std::string text = last ? last : "";
  // Its own place in the library stands in front.
  if (const auto at = text.find("): "); text.starts_with('(') && at != text.npos)
    text.erase(0, at + 3);
  if (text.find("Expected 'PONG', got ''") != text.npos)
    return "the server hangs up, as it does when it refuses a certificate";
  return text.empty() ? natsStatus_GetText(status) : text;
}

struct MessageEnd {
  void operator()(natsMsg* message) const { natsMsg_Destroy(message); }
};

natsStatus SetPlain(natsOptions* options, const NatsAddress& address) {
  std::vector<std::string> urls;
  std::vector<const char*> list;
  urls.reserve(address.servers.size());
  list.reserve(address.servers.size());
  for (const auto& server : address.servers) urls.push_back("nats://" + server);
  for (const auto& url : urls) list.push_back(url.c_str());
  natsStatus status = natsOptions_SetServers(options, list.data(), int(list.size()));
  const auto set = [&](natsStatus next) {
    if (status == NATS_OK) status = next;
  };
  set(natsOptions_SetName(options, address.name.c_str()));
  set(natsOptions_SetMaxReconnect(options, -1));
  set(natsOptions_SetReconnectWait(options, kReconnectMilliseconds));
  set(natsOptions_SetReconnectJitter(options, kJitterMilliseconds, kJitterMilliseconds));
  // Who sends keeps it until it is acknowledged, and sends it again in order.
  set(natsOptions_SetReconnectBufSize(options, 0));
  set(natsOptions_SetWriteDeadline(options, kWriteMilliseconds));
  set(natsOptions_SetPingInterval(options, kPingMilliseconds));
  if (!address.user.empty())
    set(natsOptions_SetUserInfo(options, address.user.c_str(), address.password.c_str()));
  return status;
}

}  // namespace

NatsLink::NatsLink(NatsHeard heard, std::string inbox)
    : m_heard(std::move(heard)),
      m_inbox(std::move(inbox)),
      m_options(nullptr, natsOptions_Destroy) {}

std::unique_ptr<NatsLink> NatsLink::Make(const NatsAddress& address, NatsHeard heard,
                                         std::string* why) {
  if (address.servers.empty()) return FailWith(why, "no server is named", nullptr);
  if (address.authority.empty())
    for (const auto& server : address.servers)
      if (!IsLoopback(server))
        return FailWith(why, server + ": only this machine is reached without TLS", nullptr);
  std::unique_ptr<NatsLink> link(
      new NatsLink(std::move(heard), address.inbox + "." + RandomWord()));
  if (!link->SetOptions(address, why) || !link->Secure(address, why)) return nullptr;
  std::string reason;
  if (!link->Connect(&reason)) link->m_heard.down(reason);
  link->m_keeper = std::thread([self = link.get()] { self->Keep(); });
  return link;
}

bool NatsLink::Secure(const NatsAddress& address, std::string* why) {
  natsOptions* const options = m_options.get();
  if (address.authority.empty()) return true;
  if (natsOptions_SetSecure(options, true) != NATS_OK) return FailWith(why, "there is no TLS");
  if (natsOptions_LoadCATrustedCertificates(options, address.authority.c_str()) != NATS_OK)
    return FailWith(why, address.authority + ": no certificate of an authority");
  if (address.certificate.empty()) return true;
  struct stat key {};
  if (stat(address.key.c_str(), &key) != 0) return FailOn(why, address.key);
  if ((key.st_mode & 077) != 0)
    return FailWith(why, address.key + ": others may read it (chmod 600)");
  if (natsOptions_LoadCertificatesChain(options, address.certificate.c_str(),
                                        address.key.c_str()) != NATS_OK)
    return FailWith(why, address.certificate + ": not a certificate with the key " + address.key);
  return true;
}

bool NatsLink::SetOptions(const NatsAddress& address, std::string* why) {
  natsOptions* made = nullptr;
  if (const auto status = natsOptions_Create(&made); status != NATS_OK)
    return FailNats(why, status);
  m_options.reset(made);
  for (const auto& server : address.servers) m_servers += (m_servers.empty() ? "" : ", ") + server;
  auto* const self = this;
  const auto up = [](natsConnection* from, void* link) {
    static_cast<NatsLink*>(link)->OnUp(from);
  };
  const auto down = [](natsConnection* from, void* link) {
    static_cast<NatsLink*>(link)->OnDown(from);
  };
  const auto closed = [](natsConnection*, void* link) { static_cast<NatsLink*>(link)->OnClosed(); };
  const auto error = [](natsConnection* from, natsSubscription*, natsStatus status, void* link) {
    static_cast<NatsLink*>(link)->OnError(from, status);
  };
  natsStatus status = SetPlain(made, address);
  const auto set = [&](natsStatus next) {
    if (status == NATS_OK) status = next;
  };
  set(natsOptions_SetReconnectedCB(made, up, self));
  set(natsOptions_SetDisconnectedCB(made, down, self));
  set(natsOptions_SetClosedCB(made, closed, self));
  set(natsOptions_SetErrorHandler(made, error, self));
  return status == NATS_OK || FailNats(why, status);
}

// libnats could go on trying by itself, but then it says no reason, and gives up when a server
// refuses the certificate.
bool NatsLink::Connect(std::string* why) {
  {
    std::lock_guard lock(m_mutex);
    m_closed = false;
  }
  natsConnection* made = nullptr;
  const natsStatus status = natsConnection_Connect(&made, m_options.get());
  const Connection connection(made, natsConnection_Destroy);
  {
    std::lock_guard lock(m_mutex);
    m_reason.clear();
    if (status != NATS_OK) {
      m_closed = true;
      m_reason = status == NATS_NO_SERVER ? "no server answers at " + m_servers
                                          : "no server can be reached: " + LastReason(status);
      return FailWith(why, m_reason);
    }
    m_connection = connection;
  }
  {
    std::lock_guard lock(m_subscribing);
    for (NatsSubscription* const subscription : m_subscriptions)
      subscription->Open(connection, nullptr);
  }
  OnUp(made);
  return true;
}

void NatsLink::Keep() {
  auto pause = kPause;
  std::unique_lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [&] { return m_ends || m_closed; });
    if (m_ends) return;
    const bool hadOne = std::exchange(m_connection, nullptr) != nullptr;
    lock.unlock();
    if (hadOne) {
      std::lock_guard subscribing(m_subscribing);
      for (NatsSubscription* const subscription : m_subscriptions) subscription->Close();
    }
    lock.lock();
    if (m_changed.wait_for(lock, pause, [&] { return m_ends; })) return;
    const std::string before = m_reason;
    lock.unlock();
    std::string reason;
    const bool isThere = Connect(&reason);
    if (!isThere && reason != before) m_heard.down(reason);
    pause = isThere ? kPause : std::min(2 * pause, kLongestPause);
    lock.lock();
  }
}

NatsLink::~NatsLink() {
  {
    std::lock_guard lock(m_mutex);
    m_ends = true;
    m_changed.notify_all();
  }
  if (m_keeper.joinable()) m_keeper.join();
  if (!m_connection) return;
  natsConnection_Close(m_connection.get());
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [&] { return m_closed; });
}

NatsLink::Connection NatsLink::Now() {
  std::lock_guard lock(m_mutex);
  return m_connection;
}

void NatsLink::OnUp(natsConnection* connection) {
  char url[512] = "";
  {
    std::lock_guard lock(m_mutex);
    m_up = !m_closed;
  }
  natsConnection_GetConnectedUrl(connection, url, sizeof url);
  m_heard.up(url);
}

void NatsLink::OnDown(natsConnection* connection) {
  {
    std::lock_guard lock(m_mutex);
    m_up = false;
  }
  m_heard.down(LastErrorOf(connection, "the server has ended the connection"));
}

void NatsLink::OnClosed() {
  std::lock_guard lock(m_mutex);
  m_up = false;
  m_closed = true;
  m_changed.notify_all();
}

void NatsLink::OnError(natsConnection* connection, int status) {
  if (status == NATS_NOT_PERMITTED)
    m_heard.refused(LastErrorOf(connection, "the engine does not allow it"));
}

bool NatsLink::Send(const std::string& subject, const std::string& reply, Bytes body,
                    const std::string& id, const std::uint64_t* revision, std::string* why) {
  natsMsg* made = nullptr;
  natsStatus status =
      natsMsg_Create(&made, subject.c_str(), reply.empty() ? nullptr : reply.c_str(),
                     reinterpret_cast<const char*>(body.data()), int(body.size()));
  if (status != NATS_OK) return FailNats(why, status);
  const std::unique_ptr<natsMsg, MessageEnd> message(made);
  if (!id.empty()) status = natsMsgHeader_Set(made, "Nats-Msg-Id", id.c_str());
  if (status == NATS_OK && revision)
    status = natsMsgHeader_Set(made, "Nats-Expected-Last-Subject-Sequence",
                               std::to_string(*revision).c_str());
  Connection connection;
  {
    std::lock_guard lock(m_mutex);
    if (!m_up) return FailWith(why, m_reason.empty() ? "no server is connected" : m_reason);
    connection = m_connection;
  }
  if (status == NATS_OK) status = natsConnection_PublishMsg(connection.get(), made);
  if (status == NATS_MAX_PAYLOAD)
    return FailWith(why, "the server takes messages of " +
                             std::to_string(natsConnection_GetMaxPayload(connection.get())) +
                             " bytes at most, and one has " + std::to_string(body.size()) +
                             ": raise its max_payload to 1MB");
  return status == NATS_OK || FailNats(why, status);
}

void NatsLink::Flush() {
  Connection connection;
  {
    std::lock_guard lock(m_mutex);
    if (!m_up) return;
    connection = m_connection;
  }
  natsConnection_FlushTimeout(connection.get(), 1000);
}
