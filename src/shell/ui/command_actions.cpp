#include "shell/ui/command_actions.h"

#include <QPointer>

#include "shell/look/ui/tool_icons.h"
#include "shell/menus/menu_resources.h"

CommandActions::CommandActions(CCmdTarget& target, QWidget& window)
    : QObject(&window), m_target(&target) {}

void CommandActions::SetUp(QAction& action, unsigned id) {
  action.setData(id);
  action.setStatusTip(QString::fromStdString(PromptOf(id)));
  action.setToolTip(QString::fromStdString(ToolTipOf(id)));
  // Otherwise a text could be taken for a platform role, which would move or rename the item.
  action.setMenuRole(QAction::NoRole);
}

QAction* CommandActions::Action(unsigned id) {
  QAction*& action = m_actions[id];
  if (!action) {
    action = new QAction(this);
    SetUp(*action, id);
    // For the menu of the buttons that do not fit into a narrow tool bar.
    action->setText(action->toolTip());
    connect(action, &QAction::triggered, this, [this, id] { Run(id); });
    action->setIcon(ToolIcon(id));
    action->setIconVisibleInMenu(false);
  }
  return action;
}

QAction* CommandActions::Item(unsigned id, const QString& text, QMenu* menu) {
  QAction* const action = Proxy(id, text, menu);
  connect(action, &QAction::triggered, this, [this, id] { Run(id); });
  return action;
}

QAction* CommandActions::Proxy(unsigned id, const QString& text, QObject* owner) {
  auto* action = new QAction(text, owner);
  SetUp(*action, id);
  return action;
}

void CommandActions::Update(unsigned id, QAction& action) {
  // A command without a handler is disabled and unchecked: otherwise a button would stay pressed
  // without a document.
  const bool taken = m_target && m_target->HasCommand(id);
  CCmdUI ui(id, action.isEnabled() && m_target, action.isChecked() && taken);
  if (m_target) UpdateCommand(*m_target, ui);
  // Only a checked item shows a mark; an unchecked one has no empty box before it.
  action.setCheckable(ui.IsChecked());
  action.setChecked(ui.IsChecked());
  action.setEnabled(ui.IsEnabled());
  const bool tellWhyNot = !ui.IsEnabled() && !ui.WhyNot().empty();
  action.setStatusTip(QString::fromStdString(tellWhyNot ? ui.WhyNot() : PromptOf(id)));
}

void CommandActions::UpdateAll() {
  for (const auto& [id, action] : m_actions) Update(id, *action);
}

void CommandActions::UpdateMenu(QMenu& menu) {
  for (QAction* action : menu.actions()) {
    const unsigned id = action->data().toUInt();
    if (id != 0) Update(id, *action);
    if (action->menu()) UpdateMenu(*action->menu());
  }
}

bool CommandActions::Run(unsigned id) {
  if (!m_target) return false;
  CCmdUI ui(id, true, false);
  UpdateCommand(*m_target, ui);
  const QPointer<QObject> alive(this);
  const bool ran = ui.IsEnabled() && m_target->OnCommand(id);
  if (alive && m_afterCommand) m_afterCommand();
  if (alive && !ui.IsEnabled() && !ui.WhyNot().empty() && m_refused)
    m_refused(QString::fromStdString(ui.WhyNot()));
  return ran;
}
