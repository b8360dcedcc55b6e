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
