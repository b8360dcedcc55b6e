#include "shell/ui/menus.h"

#include <QMenuBar>
#include <algorithm>

#include "docview/commands/command_ids.h"
#include "docview/win_app.h"
#include "views/stored_views.h"

namespace {

constexpr int kRecentWidthPx = 420;
constexpr std::size_t kNumberedWindows = 9;

QString Shown(const std::string& text) {
  return QString::fromStdString(text);
}

// Makes the ampersands of a text ordinary characters, not mnemonics.
QString Literal(QString text) {
  return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

Menus::Menus(CommandActions& actions, CMDIFrameWnd& frame, QMainWindow& window)
    : QObject(&window), m_actions(actions), m_frame(&frame), m_window(window) {
  m_window.menuBar()->setNativeMenuBar(false);  // show the texts unchanged
}

void Menus::SetBar(unsigned resource) {
  if (resource != m_resource) {
    m_resource = resource;
    if (!m_bars.count(resource)) MakeBar(resource);
    m_window.menuBar()->clear();
    for (const OneMenu& menu : m_bars[resource]) m_window.menuBar()->addMenu(menu.menu);
  }
  Refresh();
}

void Menus::MakeBar(unsigned resource) {
  std::vector<OneMenu>& bar = m_bars[resource];
  for (const MenuPopup& popup : MenuOf(resource)) bar.push_back(MakeMenu(popup));
  for (OneMenu& menu : bar) {
    connect(menu.menu, &QMenu::aboutToShow, this, [this, &menu] {
      RefreshMenu(menu);
      m_actions.UpdateMenu(*menu.menu);
    });
  }
}

Menus::OneMenu Menus::MakeMenu(const MenuPopup& popup) {
  OneMenu made{new QMenu(Shown(popup.title), m_window.menuBar()), {}};
  const MenuItem* recentFiles = nullptr;  // they come before the next item
  for (const MenuItem& item : popup.items) {
    QAction* action = nullptr;
    if (item.id == ID_FILE_MRU_FILE1) {
      recentFiles = &item;
    } else if (item.id == 0) {
      action = made.menu->addSeparator();
    } else if (!item.items.empty()) {
      QMenu* const sub = Submenu(item, made.menu);
      if (item.id == ID_VIEW_PROFILES) ListProfiles(*sub);
      action = made.menu->addMenu(sub);
    } else {
      action = m_actions.Item(item.id, Shown(item.text), made.menu);
      made.menu->addAction(action);
    }
    if (!action || !recentFiles) continue;
    made.changing.push_back({action, Shown(recentFiles->text), false, &Menus::RecentFiles, {}, {}});
    recentFiles = nullptr;
  }
  if (popup.windowList) made.changing.push_back({nullptr, {}, true, &Menus::OpenWindows, {}, {}});
  return made;
}

QMenu* Menus::Submenu(const MenuItem& item, QMenu* parent) {
  auto* const menu = new QMenu(Shown(item.text), parent);
  for (const MenuItem& each : item.items)
    menu->addAction(each.id == 0 ? menu->addSeparator()
                                 : m_actions.Item(each.id, Shown(each.text), menu));
  return menu;
}

// Their commands run when the pop-up has closed.
QMenu* Menus::ProxyMenu(const MenuItem& item, QMenu* parent) {
  auto* const menu = new QMenu(Shown(item.text), parent);
  for (const MenuItem& each : item.items)
    menu->addAction(each.id == 0 ? menu->addSeparator()
                                 : m_actions.Proxy(each.id, Shown(each.text), menu));
  return menu;
}

// Before the fixed items.
void Menus::ListProfiles(QMenu& menu) {
  QAction* const behind = menu.insertSeparator(menu.actions().front());
  m_profiles.push_back(
      std::make_unique<OneMenu>(OneMenu{&menu, {{behind, {}, false, &Menus::Profiles, {}, {}}}}));
  connect(&menu, &QMenu::aboutToShow, this,
          [this, made = m_profiles.back().get()] { RefreshMenu(*made); });
}

void Menus::Refresh() {
  for (OneMenu& menu : m_bars[m_resource]) {
    if (!menu.menu->isVisible()) RefreshMenu(menu);
    m_actions.UpdateMenu(*menu.menu);
  }
}

void Menus::RefreshMenu(OneMenu& menu) {
  for (Changing& part : menu.changing) Fill(*menu.menu, part);
}

// Unchanged entries keep their action.
void Menus::Fill(QMenu& menu, Changing& part) {
  Entries wanted = m_frame ? (this->*part.wanted)() : Entries();
  if (wanted.empty() && !part.ifNone.isEmpty()) wanted.push_back({part.ifNone, {}, false, {}});
  const auto same = [](const Entry& a, const Entry& b) {
    return a.text == b.text && a.prompt == b.prompt && !a.run == !b.run;
  };
  if (!std::equal(wanted.begin(), wanted.end(), part.shown.begin(), part.shown.end(), same)) {
    for (QAction* action : part.actions) {
      menu.removeAction(action);
      action->deleteLater();  // it may be the action that is being chosen
    }
    part.actions.clear();
    if (part.separated && !wanted.empty())
      part.actions.push_back(menu.insertSeparator(part.before));
    for (const Entry& entry : wanted) {
      auto* const action = new QAction(entry.text, &menu);
      action->setStatusTip(entry.prompt);
      action->setEnabled(static_cast<bool>(entry.run));
      menu.insertAction(part.before, action);
      part.actions.push_back(action);
    }
  }
  const std::size_t lines = part.actions.size() - wanted.size();
  for (std::size_t index = 0; index < wanted.size(); ++index) {
    QAction* const action = part.actions[index + lines];
    action->setCheckable(wanted[index].checked);
    action->setChecked(wanted[index].checked);
    action->disconnect(&m_actions);
    if (wanted[index].run)
      connect(action, &QAction::triggered, &m_actions, [run = wanted[index].run] { run(); });
  }
  part.shown = std::move(wanted);
}

Menus::Entries Menus::RecentFiles() {
  Entries entries;
  const std::vector<std::string>& paths = m_frame->App().RecentFiles();
  const QFontMetrics metrics(m_window.menuBar()->font());
  for (std::size_t index = 0; index < paths.size(); ++index) {
    const unsigned id = ID_FILE_MRU_FILE1 + static_cast<unsigned>(index);
    const QString path = metrics.elidedText(Shown(paths[index]), Qt::ElideMiddle, kRecentWidthPx);
    entries.push_back({QStringLiteral("&%1 %2").arg(QString::number(index + 1), Literal(path)),
                       Shown(paths[index]), false, [this, id] { m_actions.Run(id); }});
  }
  return entries;
}

Menus::Entries Menus::OpenWindows() {
  Entries entries;
  for (const auto& child : m_frame->Children()) {
    const QString title = Literal(Shown(child->Title()));
    const std::size_t number = entries.size() + 1;
    const CMDIChildWnd* const window = child.get();
    entries.push_back(
        {number <= kNumberedWindows ? QStringLiteral("&%1 %2").arg(number).arg(title) : title,
         {},
         window == m_frame->MDIGetActive(),
         [this, window] { Activate(window); }});
  }
  return entries;
}

Menus::Entries Menus::Profiles() {
  Entries entries;
  const QFontMetrics metrics(m_window.menuBar()->font());
  unsigned id = ID_VIEW_PROFILE1;
  for (const Profile& profile : ReadProfiles()) {
    if (id > ID_VIEW_PROFILELAST) break;
    const QString name = metrics.elidedText(Shown(profile.name), Qt::ElideRight, kRecentWidthPx);
    entries.push_back({Literal(name), QStringLiteral("Apply this profile to the window"), false,
                       [this, name = profile.name] { RunProfile(name); }});
    ++id;
  }
  return entries;
}

// Another program may have added or removed some since the menu opened.
void Menus::RunProfile(const std::string& name) {
  const std::vector<Profile> profiles = ReadProfiles();
  const auto found = std::ranges::find(profiles, name, &Profile::name);
  const auto id = ID_VIEW_PROFILE1 + static_cast<unsigned>(found - profiles.begin());
  if (found != profiles.end() && id <= ID_VIEW_PROFILELAST) m_actions.Run(id);
}

// An item may outlive its window for a moment.
void Menus::Activate(const CMDIChildWnd* child) {
  if (!m_frame) return;
  for (const auto& each : m_frame->Children()) {
    if (each.get() == child) return each->ActivateFrame();
  }
}

unsigned Menus::Track(unsigned resource, const QPoint& screen, const std::vector<MenuItem>& more) {
  QMenu menu(&m_window);
  for (const MenuPopup& popup : MenuOf(resource)) {
    for (const MenuItem& item : popup.items) {
      if (item.id == 0) {
        menu.addSeparator();
      } else {
        menu.addAction(m_actions.Proxy(item.id, Shown(item.text), &menu));
      }
    }
  }
  if (!more.empty()) menu.addSeparator();
  for (const MenuItem& item : more) {
    if (item.items.empty())
      menu.addAction(m_actions.Proxy(item.id, Shown(item.text), &menu));
    else
      menu.addMenu(ProxyMenu(item, &menu));
  }
  m_actions.UpdateMenu(menu);
  const QAction* chosen = menu.exec(screen);
  return chosen ? chosen->data().toUInt() : 0;
}
