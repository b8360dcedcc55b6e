// A lasting connection to one machine's service. It connects, sends the hello, and connects again
// after a break. The first connection to the local service starts a service if none runs.
//
// Owner    The user lives until Stop has returned or Start has failed; then it is not called again.
// Errors   Start returns false and a reason when the service cannot be reached or refuses. A later
//          break is reported to the user, and the link tries again with pauses from 50 ms to 2 s
//          for as long as it lives. A refusal then counts as a break, because the service may
//          accept later.
// Threads  Start and Stop on the owner's thread, neither while the other runs; Post from any. The
//          user is called on the link's own thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "quor/protocol/connection.h"
#include "quor/protocol/quor.pb.h"

class ServiceLink {
 public:
  class User {
   public:
    // The service has sent its Welcome. The connection is the link's, valid until OnDown.
    virtual void OnUp(Connection& connection, const quor::wire::Welcome& welcome) = 0;
    virtual void OnFrame(const Frame& frame) = 0;
    // The rest that it asked the connection for is over.
    virtual void OnRested() {}
    virtual void OnDown(const std::string& reason) = 0;  // only after OnUp

   protected:
    ~User() = default;
  };

  // `machine`: or the address of stored traces, which a process of its own reads.
  ServiceLink(std::string machine, quor::wire::Role role, User& user);
  ~ServiceLink() { Stop(); }
  ServiceLink(const ServiceLink&) = delete;
  ServiceLink& operator=(const ServiceLink&) = delete;

  // Waits for the service's Welcome. Call it once. It returns by the deadline, also on failure.
  bool Start(std::chrono::milliseconds deadline, std::string* why);
  // After Start: if the connection is broken, waits until it works again. False: still broken.
  bool Await(std::chrono::milliseconds deadline, std::string* why);
  // Stops immediately, whatever is in progress.
  void Stop();
  // Runs `call` on the link's thread, with the connection or null while there is none. Dropped
  // after Stop.
  void Post(std::function<void(Connection*)> call);
  // Closes the connection and makes it again, after a violation of the protocol. On the link's
  // thread.
  void Break(const std::string& reason);

 private:
  class Core;
  std::shared_ptr<Core> m_core;
};
