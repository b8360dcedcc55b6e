// The connection to one machine's configuration service, shared by all handles on that machine.
//
// Owner    Shared. The last handle ends it. The service then closes the applications that this
//          program had opened.
// Errors   Ask returns false when the machine refuses or has not answered by the deadline. A broken
//          connection is made again: open applications are opened again, and open questions are
//          asked again.
// Threads  Interface thread; Ask blocks.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "quor/client/link/service_link.h"
#include "quor/client/questions.h"

class ConfigLink final : public ServiceLink::User {
 public:
  using Clock = std::chrono::steady_clock;
  // Of a call that begins now. One for all that a call asks, so that it does not wait twice.
  static Clock::time_point Deadline() { return Clock::now() + std::chrono::seconds(5); }

  // The link to the machine of this text, made if there is none; null when it cannot be reached.
  static std::shared_ptr<ConfigLink> To(const std::string& host, Clock::time_point until,
                                        std::string* why = nullptr,
                                        quor::wire::Role role = quor::wire::ROLE_CONFIGURE);

  ConfigLink(const std::string& host, quor::wire::Role role) : m_link(host, role, *this) {}
  ~ConfigLink() { m_link.Stop(); }

  // `response` also gets the answer of a machine that refuses.
  bool Ask(quor::wire::Request request, Clock::time_point until, quor::wire::Response* response,
           std::string* why = nullptr);
  // Opens a handle on an application; call Close as often. The answer contains its state.
  bool Open(const std::string& app, Clock::time_point until, quor::wire::Response* response,
            std::string* why = nullptr);
  void Close(const std::string& app);

  void OnUp(Connection& connection, const quor::wire::Welcome& welcome) override;
  void OnFrame(const Frame& frame) override;
  void OnDown(const std::string&) override { m_up = false; }
  // False also after a question without an answer, until the service is heard again.
  bool IsUp() const { return m_up && m_heard; }
  // A question had no answer, and the service has not been heard since.
  bool IsSilent() const { return !m_heard; }

 private:
  bool AskLocked(std::unique_lock<std::mutex>& lock, quor::wire::Request request,
                 Clock::time_point until, quor::wire::Response* response, std::string* why);

  ServiceLink m_link;
  std::atomic<bool> m_up{false};  // set on the link's thread
  std::atomic<bool> m_heard{true};
  std::mutex m_mutex;  // guards all members below
  std::condition_variable m_answered;
  Questions m_questions;
  std::map<std::string, int> m_open;  // handles by application
};
