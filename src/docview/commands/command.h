// Commands: numbered requests of the user, passed along a chain of targets until one handles them.
//
// Shape    A target has a table from command id to a handler and an update handler. A class that
//          comes before others in the chain (view before document, frame before application)
//          overrides the three virtual operations and asks the others in turn.
// Errors   None. A command without a handler does nothing, and its menu item is disabled.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

// The state of one menu item or button, for the update handler of its command. A handler that calls
// nothing leaves the state as it was.
class CCmdUI {
 public:
  CCmdUI(unsigned id, bool enabled, bool checked)
      : m_nID(id), m_enabled(enabled), m_checked(checked) {}
  void Enable(bool on = true) { m_enabled = on; }
  void SetCheck(bool on = true) { m_checked = on; }
  // The reason to show to a user who asks for the disabled command.
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

  // Runs the command if this target, or a later one of the chain, has a handler.
  virtual bool OnCommand(unsigned id);
  // Runs the first update handler of the same chain; false when there is none.
  virtual bool OnUpdateCommand(CCmdUI& ui);
  // Would OnCommand find a handler?
  virtual bool HasCommand(unsigned id) const;

 protected:
  using Run = std::function<void()>;
  using Update = std::function<void(CCmdUI&)>;
  // Without an update handler the command is enabled wherever its handler can be reached.
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

// Updates an item before it is shown: by the update handler, or without one by whether there is a
// handler.
void UpdateCommand(CCmdTarget& first, CCmdUI& ui);
