// The connection to one machine's configuration service, shared by all handles on that machine.
//
// Owner    Shared; the last handle ends it, and with it the service closes what this program had
//          opened.
// Errors   Ask gives false when the machine refuses or has not answered in time. A connection that
//          breaks mends itself: open applications are opened again, and questions asked again (each
//          may be asked twice without harm).
// Threads  Interface thread; Ask blocks.
#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quor/client/service_link.h"

class ConfigLink final : public ServiceLink::User {
 public:
  // The link to the machine of this text, made if there is none; null when it cannot be reached
  // now.
  static std::shared_ptr<ConfigLink> To(const std::string& host, std::string* why = nullptr);

  explicit ConfigLink(const std::string& host) : m_link(host, quor::wire::ROLE_CONFIGURE, *this) {}
  ~ConfigLink() { m_link.Stop(); }

  bool Ask(quor::wire::Request request, quor::wire::Response* response, std::string* why = nullptr);
  // A handle on an application; as many Close follow. The answer holds its state.
  bool Open(const std::string& app, quor::wire::Response* response, std::string* why = nullptr);
  void Close(const std::string& app);

  void OnUp(Connection& connection, const quor::wire::Welcome& welcome) override;
  void OnFrame(const Frame& frame) override;
  void OnDown(const std::string&) override {}

 private:
  struct Question {
    quor::wire::Request request;
    std::optional<quor::wire::Response> answer;
  };

  ServiceLink m_link;
  std::mutex m_mutex;  // guards all below
  std::condition_variable m_answered;
  std::map<std::uint32_t, Question> m_questions;
  std::map<std::string, int> m_open;  // handles by application
  std::uint32_t m_lastId = 0;
};
