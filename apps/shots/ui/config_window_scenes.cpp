#include "config_window_scenes.h"

#include <QApplication>
#include <QListView>
#include <QTimer>

#include "docview/commands/command_ids.h"
#include "settings/globals.h"
#include "shell/menus/resource_ids.h"
#include "shell/tessera_app.h"
#include "support/fake_config_client.h"

namespace {

constexpr int kLookMs = 700;         // by then the window has looked at its connection
const QSize kSmallWindow(680, 440);  // a configuration's window is small

QListView& Applications(QWidget& window) {
  return *window.findChild<QListView*>(QStringLiteral("applications"));
}

}  // namespace

ConfigWindowScenes::ConfigWindowScenes(CTesseraApp& tessera, ShotScenes& scenes)
    : m_tessera(tessera), m_scenes(scenes) {
  for (const char* const app : {"billing", "catalogue", "Mail", "orders", "reports", "stock"})
    m_machine.Run(app, {"Net/Connect", "Net/Close"});
  m_tessera.m_configClient = ClientOf(m_machine);
}

void ConfigWindowScenes::All() {
  const QSize before = m_scenes.Window().size();
  m_scenes.Window().resize(kSmallWindow);
  Query();
  m_tessera.OpenConfig("web-03");
  Empty();
  AddDialog();
  Filled();
  PopUp();
  Gone();
  g_quickClose = true;  // no questions
  m_tessera.ConfigTemplate()->CloseAllDocuments();
  g_quickClose = false;
  m_scenes.Window().resize(before);
}

void ConfigWindowScenes::Save(const QString& name) {
  m_tessera.Frame()->OnIdle();  // the status bar's words
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("config-") + name);
}

void ConfigWindowScenes::Query() {
  m_scenes.SaveModal(ID_FILE_NEWCONFIG, QStringLiteral("config-query"));
}

void ConfigWindowScenes::Empty() {
  Save(QStringLiteral("empty"));
}

void ConfigWindowScenes::AddDialog() {
  m_scenes.Answer([this](QWidget& dialog) {
    QListView& list = Applications(dialog);
    list.setCurrentIndex(list.model()->index(1, 0));
    list.selectionModel()->select(list.model()->index(3, 0), QItemSelectionModel::Select);
    m_scenes.Save(dialog, QStringLiteral("config-add"));
    dialog.close();
  });
  m_tessera.Frame()->OnCommand(ID_CONFIG_ADD);
  m_machine.m_away = true;
  m_scenes.SaveModal(ID_CONFIG_ADD, QStringLiteral("config-add-none"));
  m_machine.m_away = false;
}

void ConfigWindowScenes::Filled() {
  auto& config = static_cast<CConfigDoc&>(*m_tessera.ConfigTemplate()->Documents().front());
  for (const char* const app : {"orders", "billing", "Mail"}) config.AddApplication(app);
  QListView& list = Applications(m_scenes.Window());
  list.setCurrentIndex(list.model()->index(2, 0));
  Save(QStringLiteral("window"));
  m_scenes.SaveMenu(QStringLiteral("Config"), QStringLiteral("config-menu"));
}

void ConfigWindowScenes::PopUp() {
  QTimer::singleShot(kLookMs, &m_scenes.Window(), [this] {
    QWidget* const menu = QApplication::activePopupWidget();
    if (!menu) return;
    m_scenes.Save(*menu, QStringLiteral("config-popup"));
    menu->close();
  });
  m_tessera.Frame()->Face()->TrackPopupMenu(IDR_CONFIG_POPUP, 10, 10, {});
}

void ConfigWindowScenes::Gone() {
  m_machine.m_away = true;
  QEventLoop wait;
  QTimer::singleShot(kLookMs, &wait, &QEventLoop::quit);
  wait.exec();
  Save(QStringLiteral("gone"));
  m_machine.m_away = false;
}
