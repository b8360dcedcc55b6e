#include "shell/ui/menus.h"

#include <QMenuBar>

#include "docview/win_app.h"

namespace {

constexpr int kRecentWidthPx = 420;
constexpr int kNumberedWindows = 9;

QString Shown(const std::string& text) {
  return QString::fromStdString(text);
}

// A text that is not a label: its ampersands are no mnemonics.
QString Literal(QString text) {
  return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

Menus::Menus(CommandActions& actions, CMDIFrameWnd& frame, QMainWindow& window)
    : QObject(&window), m_actions(actions), m_frame(&frame), m_window(window) {
  m_window.menuBar()->setNativeMenuBar(false);  // the texts are to be shown as they stand
}

void Menus::SetBar(unsigned resource) {
  if (resource == m_resource) return Refresh();
  m_resource = resource;
  // Later: the command that swaps the bar may come from one of these menus.
  for (const auto& menu : m_menus) {
    if (menu) menu->deleteLater();
  }
  m_menus.clear();
  m_window.menuBar()->clear();
  for (const MenuPopup& popup : MenuOf(resource)) {
    QMenu* menu = m_window.menuBar()->addMenu(Shown(popup.title));
    m_menus.push_back(menu);
    Fill(*menu, popup);
    connect(menu, &QMenu::aboutToShow, this, [this, menu, &popup] {
      Fill(*menu, popup);
      m_actions.UpdateMenu(*menu);
    });
  }
}

void Menus::Refresh() {
  const std::vector<MenuPopup>& popups = MenuOf(m_resource);
  for (std::size_t index = 0; index < m_menus.size(); ++index) {
    if (m_menus[index] && !m_menus[index]->isVisible()) Fill(*m_menus[index], popups[index]);
  }
}

void Menus::Fill(QMenu& menu, const MenuPopup& popup) {
  menu.clear();
  if (!m_frame) return;
  for (const MenuItem& item : popup.items) {
    if (item.id == 0) {
      menu.addSeparator();
    } else if (item.id == ID_FILE_MRU_FILE1) {
      AddRecentFiles(menu, item);
    } else {
      QAction* action = m_actions.Action(item.id);
      action->setText(Shown(item.text));
      menu.addAction(action);
    }
  }
  if (popup.windowList) AddWindowList(menu);
}

void Menus::AddRecentFiles(QMenu& menu, const MenuItem& item) {
  const std::vector<std::string>& paths = m_frame->App().RecentFiles();
  if (paths.empty()) menu.addAction(Shown(item.text))->setEnabled(false);
  for (std::size_t index = 0; index < paths.size(); ++index) {
    const unsigned id = ID_FILE_MRU_FILE1 + static_cast<unsigned>(index);
    const QString path =
        menu.fontMetrics().elidedText(Shown(paths[index]), Qt::ElideMiddle, kRecentWidthPx);
    QAction* action =
        menu.addAction(QStringLiteral("&%1 %2").arg(QString::number(index + 1), Literal(path)));
    action->setStatusTip(Shown(paths[index]));
    connect(action, &QAction::triggered, &m_actions, [this, id] { m_actions.Run(id); });
  }
}

void Menus::AddWindowList(QMenu& menu) {
  const auto& children = m_frame->Children();
  if (children.empty()) return;
  menu.addSeparator();
  int number = 0;
  for (const auto& child : children) {
    const QString title = Literal(Shown(child->Title()));
    const QString text =
        ++number <= kNumberedWindows ? QStringLiteral("&%1 %2").arg(number).arg(title) : title;
    QAction* action = menu.addAction(text);
    action->setCheckable(child.get() == m_frame->MDIGetActive());
    action->setChecked(action->isCheckable());
    CMDIChildWnd* const window = child.get();
    connect(action, &QAction::triggered, &m_actions, [window] { window->ActivateFrame(); });
  }
}

unsigned Menus::Track(unsigned resource, const QPoint& screen) {
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
  m_actions.UpdateMenu(menu);
  const QAction* chosen = menu.exec(screen);
  return chosen ? chosen->data().toUInt() : 0;
}
