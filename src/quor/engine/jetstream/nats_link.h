// One connection to the servers of an engine, over libnats, made again for ever when it breaks, and
// also where libnats gives up, as it does when a server refuses who they are.
//
// Shape    Nothing is kept for later: what cannot be sent now is not sent. `inbox` is the beginning
//          of all subjects at which this connection listens for answers.
// Owner    Subscriptions end before their link. No handler runs after the destructor of its object.
//          The destructor of a link waits for an attempt to connect: two seconds for each server at
//          most.
// Errors   False and a reason. Permissions that are refused come through `refused`.
// Threads  Any. Handlers run on threads of libnats and of the link; no object may be made or
//          destroyed in a handler.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/bytes.h"
#include "quor/engine/pull/bus.h"

struct __natsConnection;
struct __natsMsg;
struct __natsOptions;
struct __natsSubscription;

struct NatsAddress {
  std::vector<std::string> servers;  // "host:port"
  // PEM files, for mutual TLS. All empty: none, and then only to this machine itself.
  std::string certificate, key, authority;
  std::string name;              // of the connection, for people
  std::string inbox = "_INBOX";  // begins the subjects of answers
  std::string user, password;    // beside or instead of a certificate
};

struct NatsHeard {
  std::function<void(const std::string& server)> up;
  std::function<void(const std::string& why)> down;
  std::function<void(const std::string& what)> refused;
};

class NatsSubscription;

class NatsLink {
 public:
  // Returns when it is connected, or when no server could be reached at once: `up` comes later
  // then.
  static std::unique_ptr<NatsLink> Make(const NatsAddress& address, NatsHeard heard,
                                        std::string* why);
  ~NatsLink();
  NatsLink(const NatsLink&) = delete;

  // `revision`: expected of the last message of that subject, if it is there.
  bool Send(const std::string& subject, const std::string& reply, Bytes body, const std::string& id,
            const std::uint64_t* revision, std::string* why);
  // Waits, for a second at most, until the server has all that was sent, subscriptions too.
  void Flush();
  const std::string& Inbox() const { return m_inbox; }

 private:
  friend class NatsSubscription;
  using Connection = std::shared_ptr<__natsConnection>;
  NatsLink(NatsHeard heard, std::string inbox);
  bool SetOptions(const NatsAddress& address, std::string* why);
  bool Secure(const NatsAddress& address, std::string* why);
  bool Connect(std::string* why);
  void Keep();
  Connection Now();
  void OnUp(__natsConnection* connection);
  void OnDown(__natsConnection* connection);
  void OnClosed();
  void OnError(__natsConnection* connection, int status);

  const NatsHeard m_heard;
  const std::string m_inbox;
  std::unique_ptr<__natsOptions, void (*)(__natsOptions*)> m_options;
  std::string m_servers;  // for people
  std::mutex m_subscribing;
  std::set<NatsSubscription*> m_subscriptions;  // guarded by m_subscribing
  std::mutex m_mutex;                           // what follows
  std::condition_variable m_changed;
  Connection m_connection;
  std::string m_reason;  // why there is none
  bool m_up = false, m_closed = true, m_ends = false;
  std::thread m_keeper;
};

class NatsSubscription {
 public:
  using Handler = std::function<void(BusMessage)>;
  static std::unique_ptr<NatsSubscription> Make(NatsLink& link, const std::string& subject,
                                                Handler handler, std::string* why);
  ~NatsSubscription();
  NatsSubscription(const NatsSubscription&) = delete;

 private:
  NatsSubscription(NatsLink& link, std::string subject, Handler handler)
      : m_link(link), m_subject(std::move(subject)), m_handler(std::move(handler)) {}
  friend class NatsLink;
  bool Open(const NatsLink::Connection& connection, std::string* why);
  void Close();

  NatsLink& m_link;
  const std::string m_subject;
  const Handler m_handler;
  __natsSubscription* m_subscription = nullptr;
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_complete = false;
};
