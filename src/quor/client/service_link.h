// A connection to one machine's service that is kept up: dialled, greeted, and made again after a
// break. Dialling the local service for the first time starts one if none runs.
//
// Owner    The user lives until Stop has returned or Start has failed; then it is not called again.
// Errors   Start gives false and a reason when the service cannot be reached or refuses. A break
//          later is told to the user, and mended with back-off from 50 ms to 2 s for as long as the
//          link lives. A refusal then counts as a break: the service may be taught better.
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
    // The service has welcomed us. The connection is the link's, good until OnDown.
    virtual void OnUp(Connection& connection, const quor::wire::Welcome& welcome) = 0;
    virtual void OnFrame(const Frame& frame) = 0;
    virtual void OnDown(const std::string& reason) = 0;  // only after OnUp

   protected:
    ~User() = default;
  };

  ServiceLink(std::string machine, quor::wire::Role role, User& user);
  ~ServiceLink() { Stop(); }
  ServiceLink(const ServiceLink&) = delete;
  ServiceLink& operator=(const ServiceLink&) = delete;

  // Waits until the service has welcomed us. To be called once. A failure is over by the deadline.
  bool Start(std::chrono::milliseconds deadline, std::string* why);
  // After Start: waits until the connection stands, if it is broken now. False: it still is.
  bool Await(std::chrono::milliseconds deadline, std::string* why);
  // At once, whatever is under way.
  void Stop();
  // Runs `call` on the link's thread, with the connection or null while there is none. Dropped
  // after Stop.
  void Post(std::function<void(Connection*)> call);
  // Ends the connection, to be made anew: the service sent what it must not. On the link's thread.
  void Break(const std::string& reason);

 private:
  class Core;
  std::shared_ptr<Core> m_core;
};
