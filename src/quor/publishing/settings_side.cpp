#include "quor/publishing/settings_side.h"

#include "base/fail_with.h"

namespace {

constexpr std::chrono::seconds kStep{1};
// Below the deadline of who asks through the engine.
constexpr std::chrono::milliseconds kLocalDeadline{1500};

}  // namespace

SettingsSide::SettingsSide(Engine& engine, const std::string& machine, SettingsFollower::Say say)
    : m_say(std::move(say)),
      m_follower(
          engine, machine,
          [this](const quor::wire::Request& request, quor::wire::Response* response,
                 std::string* why) { return AskLocal(request, response, why); },
          m_say) {}

void SettingsSide::Start() {
  m_thread = std::thread([this] { Work(); });
}

void SettingsSide::Stop() {
  m_ends = true;
  {
    const std::lock_guard lock(m_mutex);
    if (m_isFollowing) m_follower.Wake();
  }
  if (m_thread.joinable()) m_thread.join();
  m_follower.Stop();
}

void SettingsSide::Work() {
  std::string why;
  if (!m_follower.Start(&why)) return m_say("settings of the cluster are not followed: " + why);
  {
    const std::lock_guard lock(m_mutex);
    m_isFollowing = true;
  }
  while (!m_ends) m_follower.Step(kStep);
}

std::shared_ptr<ConfigLink> SettingsSide::Link(ConfigLink::Clock::time_point until,
                                               std::string* why) {
  const std::lock_guard lock(m_mutex);
  if (!m_link) m_link = ConfigLink::To("localhost", until, why);
  return m_link;
}

// Handles are those of the link, which opens them again when the service was started anew.
bool SettingsSide::AskLocal(const quor::wire::Request& request, quor::wire::Response* response,
                            std::string* why) {
  const auto until = ConfigLink::Clock::now() + kLocalDeadline;
  const auto link = Link(until, why);
  if (!link) return false;
  if (request.has_close_app()) {
    link->Close(request.close_app().name());
    return true;
  }
  if (!link->IsUp() && !link->IsSilent())
    return FailWith(why, "the trace service of the machine is away");
  if (request.has_open_app()) return link->Open(request.open_app().name(), until, response, why);
  return link->Ask(request, until, response, why);
}
