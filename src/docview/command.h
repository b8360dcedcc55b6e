// Commands: numbered requests of the user that look for the first target to take them.
//
// Shape    A target has a table from command id to a handler and an update handler. A class that
//          stands in front of others (view before document, frame before application) overrides the
//          three virtual operations and asks the others in turn.
// Errors   None. A command that nobody takes does nothing, and its menu item is disabled.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

// The state of one menu item or button while its command's update handler looks at it. A handler
// that calls nothing leaves the state as it was.
class CCmdUI {
 public:
  CCmdUI(unsigned id, bool enabled, bool checked)
      : m_nID(id), m_enabled(enabled), m_checked(checked) {}
  void Enable(bool on = true) { m_enabled = on; }
  void SetCheck(bool on = true) { m_checked = on; }
  // Says to a person who asks for a disabled command what it lacks.
  void SetWhyNot(std::string reason) { m_whyNot = std::move(reason); }
  bool IsEnabled() const { return m_enabled; }
  bool IsChecked() const { return m_checked; }
  const std::string& WhyNot() const { return m_whyNot; }

  const unsigned m_nID;

 private:
  bool m_enabled, m_checked;
  std::string m_whyNot;
};

class CCmdTarget {
 public:
  CCmdTarget() = default;
  virtual ~CCmdTarget() = default;
  CCmdTarget(const CCmdTarget&) = delete;
  CCmdTarget& operator=(const CCmdTarget&) = delete;

  // Runs the command if this target, or one that it stands in front of, takes it.
  virtual bool OnCommand(unsigned id);
  // Runs the first update handler on the same road; false when there is none.
  virtual bool OnUpdateCommand(CCmdUI& ui);
  // Would OnCommand find a handler?
  virtual bool HasCommand(unsigned id) const;

 protected:
  using Run = std::function<void()>;
  using Update = std::function<void(CCmdUI&)>;
  // Without an update handler the command is enabled wherever its handler is reached.
  void MapCommand(unsigned id, Run run, Update update = {});
  // The state of an item whose command is handled elsewhere.
  void MapUpdate(unsigned id, Update update);

 private:
  struct Entry {
    Run run;
    Update update;
  };
  std::map<unsigned, Entry> m_commands;
};

// What an item shows before it is seen: the update handler decides, or without one the presence of
// a handler.
void UpdateCommand(CCmdTarget& first, CCmdUI& ui);

// The framework's command ids that this program uses; ids of its own stand in shell/command_ids.h.
enum FrameworkCommand : unsigned {
  ID_FILE_OPEN = 57601,
  ID_FILE_CLOSE = 57602,
  ID_FILE_SAVE = 57603,
  ID_FILE_SAVE_AS = 57604,
  ID_FILE_PRINT_SETUP = 57606,
  ID_FILE_PRINT = 57607,
  ID_FILE_PRINT_DIRECT = 57608,
  ID_FILE_PRINT_PREVIEW = 57609,
  ID_FILE_MRU_FILE1 = 57616,
  ID_EDIT_CLEAR_ALL = 57633,
  ID_EDIT_COPY = 57634,
  ID_EDIT_FIND = 57636,
  ID_WINDOW_NEW = 57648,
  ID_WINDOW_ARRANGE = 57649,
  ID_WINDOW_CASCADE = 57650,
  ID_WINDOW_TILE_HORZ = 57651,
  ID_APP_ABOUT = 57664,
  ID_APP_EXIT = 57665,
  ID_HELP_INDEX = 57667,
  ID_CONTEXT_HELP = 57669,
  ID_HELP = 57670,
  ID_DEFAULT_HELP = 57671,
  ID_VIEW_TOOLBAR = 59392,
  ID_VIEW_STATUS_BAR = 59393,
};
