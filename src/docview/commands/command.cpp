#include "docview/commands/command.h"

#include <utility>

bool CCmdTarget::OnCommand(unsigned id) {
  const auto entry = m_commands.find(id);
  if (entry == m_commands.end() || !entry->second.run) return false;
  // A copy: the handler may destroy this target, and its own table with it.
  const Run run = entry->second.run;
  run();
  return true;
}

bool CCmdTarget::OnUpdateCommand(CCmdUI& ui) {
  const auto entry = m_commands.find(ui.m_nID);
  if (entry == m_commands.end() || !entry->second.update) return false;
  entry->second.update(ui);
  return true;
}

bool CCmdTarget::HasCommand(unsigned id) const {
  const auto entry = m_commands.find(id);
  return entry != m_commands.end() && entry->second.run;
}

void CCmdTarget::MapCommand(unsigned id, Run run, Update update) {
  m_commands[id] = {std::move(run), std::move(update)};
}

void CCmdTarget::MapUpdate(unsigned id, Update update) {
  m_commands[id].update = std::move(update);
}

void UpdateCommand(CCmdTarget& first, CCmdUI& ui) {
  if (!first.OnUpdateCommand(ui)) ui.Enable(first.HasCommand(ui.m_nID));
}
