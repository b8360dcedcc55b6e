// The wizard of the real program over real services: this machine, and two that are reached over
// TLS.
#pragma once

#include <filesystem>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "docview/commands/command_ids.h"
#include "quor/live/fleet.h"
#include "wizard/ui/live/wizard_user.h"

class WizardLive : public ShellTest {
 protected:
  // File dialogs go into the test's folder, which is removed.
  ~WizardLive() override {
    CloseProgram();
    std::filesystem::current_path(m_folderBefore);
  }

  // Runs the wizard; what `act` leaves open is cancelled.
  void RunWizard(const std::function<void(WizardUser&)>& act) {
    OnModal([&](QWidget* wizard) {
      WizardUser user(wizard);
      user.UseFiles(m_dir);
      act(user);
      if (wizard->isVisible()) user.Do("cancel");
    });
    Frame().OnCommand(ID_FILE_WIZARD);
  }
  std::vector<std::string> Windows() {
    std::vector<std::string> titles;
    for (const auto& child : Frame().Children()) titles.push_back(child->Title());
    return titles;
  }
  // Without questions: what is in force stays.
  void CloseWindows() {
    g_quickClose = true;
    m_app->CloseAllDocuments();
    g_quickClose = false;
    Settle();
  }
  void CloseProgram() {
    g_quickClose = true;
    m_app.reset();
    g_quickClose = false;
  }

 private:
  const std::filesystem::path m_folderBefore = std::filesystem::current_path();
};

// In words "db" is the first machine and "web" the second; this one is "localhost" or "THIS".
class WizardFleet : public WizardLive {
 protected:
  void SetUp() override {
    m_fleet.Start();
    for (const auto& [machine, app, components] : m_apps)
      m_running.push_back(std::make_unique<TrcProcess>(m_fleet.Emit(machine, app, components)));
    ASSERT_NO_FATAL_FAILURE(AwaitApps());
    Start();
  }
  void AwaitApps() {
    for (const auto& [machine, app, components] : m_apps) {
      const auto commas = std::count(components.begin(), components.end(), ',');
      ASSERT_TRUE(m_fleet.IsTraced(machine, app, 3 * (1 + static_cast<std::size_t>(commas))));
    }
  }
  void RunWizard(const std::function<void(WizardUser&)>& act) {
    WizardLive::RunWizard([&](WizardUser& user) {
      for (const auto& [word, machine] : m_words) user.Call(word, m_fleet.Name(machine));
      user.OnGoesAway(
          [this](const std::string& word) { m_fleet.Service(m_words.at(word)).Kill(); });
      act(user);
    });
  }
  std::string Name(const std::string& word) { return m_fleet.Name(m_words.at(word)); }
  // The settings of an application as trc prints them, sorted: "Db/Close Info, Warn", one in a
  // line.
  std::string Settings(const std::string& word, const std::string& app) {
    std::set<std::string> traces;
    for (const std::string& line : LinesOf(m_fleet.Shown(m_words.at(word), app))) {
      const std::size_t name = std::min(line.find(' '), line.size());
      if (line.substr(0, name).find('/') == std::string::npos) continue;
      traces.insert(line.substr(0, name) + line.substr(line.find_first_not_of(' ', name) - 1) +
                    "\n");
    }
    return std::accumulate(traces.begin(), traces.end(), std::string());
  }

  // Machine, name and components. The same ones stand in another order on another machine.
  const std::vector<std::tuple<int, std::string, std::string>> m_apps = {{0, "billing", "Db"},
                                                                         {0, "orders", "Net,Db"},
                                                                         {1, "store", "Row"},
                                                                         {2, "orders", "Db,Net"},
                                                                         {2, "shop", "Cart"}};
  const std::map<std::string, int> m_words = {{"localhost", 0}, {"db", 1}, {"web", 2}};
  Fleet m_fleet;
  std::vector<std::unique_ptr<TrcProcess>> m_running;
};
