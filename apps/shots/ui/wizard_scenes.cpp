#include "wizard_scenes.h"

#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeView>

#include "config/traces/ui/traces_panel.h"
#include "docview/commands/command_ids.h"
#include "docview/sheet/ui/sheet_face.h"
#include "shell/tessera_app.h"
#include "support/fake_config_client.h"
#include "wizard/machines_page.h"
#include "wizard/network_page.h"

namespace {

void Press(QWidget& window, unsigned id) {
  window.findChild<QPushButton*>(QString::number(id))->click();
}

constexpr int kMostPages = 10;

void SelectApplications(QListView& list) {
  for (const int row : {1, 3})
    list.selectionModel()->select(list.model()->index(row, 0), QItemSelectionModel::Select);
}

void SetTraces(QWidget& wizard) {
  QTreeView& list = *wizard.findChild<QTreeView*>(QStringLiteral("traces"));
  const QAbstractItemModel& rows = *list.model();
  if (rows.rowCount() < 4) return;
  list.setCurrentIndex(rows.index(1, 0));
  list.selectionModel()->select({rows.index(1, 0), rows.index(3, 2)}, QItemSelectionModel::Select);
  Press(wizard, TracesPanel::kDeveloper);
}

}  // namespace

WizardScenes::WizardScenes(CTesseraApp& tessera, ShotScenes& scenes)
    : m_tessera(tessera), m_scenes(scenes) {
  for (const char* const app : {"billing", "catalogue", "Mail", "orders", "reports", "stock"})
    m_machine.Run(app, {"Cart/Add", "Cart/Remove", "Net/Accept", "Net/Close", "Net/Read",
                        "Orders/Commit", "Orders/Pay", "Stock/Reserve"});
}

void WizardScenes::All() {
  const ConfigClient before = m_tessera.m_configClient;
  m_tessera.m_configClient = ClientOf(m_machine);
  m_scenes.Answer([this](QWidget& wizard) { Walk(wizard); });
  m_tessera.Frame()->OnCommand(ID_FILE_WIZARD);
  m_tessera.m_configClient = before;
}

// A window manager activates it when the box above it closes.
void WizardScenes::Page(QWidget& wizard, const char* name) {
  wizard.activateWindow();
  m_scenes.Settle();
  m_scenes.Save(wizard, QStringLiteral("wizard-") + QLatin1String(name));
}

void WizardScenes::AddMachine(QWidget& wizard, const char* name) {
  m_scenes.Answer([name](QWidget& query) {
    query.findChild<QLineEdit*>()->setText(QLatin1String(name));
    static_cast<QDialog&>(query).accept();
  });
  Press(wizard, CWizMachinesPage::kAdd);
}

// With two machines, so that every page shows.
void WizardScenes::Walk(QWidget& wizard) {
  const auto next = [&wizard] { Press(wizard, QtSheetFace::kNext); };
  Page(wizard, "welcome");
  next();
  Page(wizard, "mode");
  next();
  wizard.findChild<QRadioButton*>(QString::number(CWizNetworkPage::kMode + 1))->click();
  Page(wizard, "networking");
  next();
  AddMachine(wizard, "web-03");
  AddMachine(wizard, "orders.example.org");
  Page(wizard, "machines");
  next();
  m_scenes.Settle();
  auto* const list = wizard.findChild<QListView*>(QStringLiteral("applications"));
  SelectApplications(*list);
  Page(wizard, "applications");
  next();
  m_scenes.Settle();
  SetTraces(wizard);
  Page(wizard, "traces");
  // Two applications of each machine.
  const auto* const finish = wizard.findChild<QPushButton*>(QString::number(QtSheetFace::kFinish));
  for (int page = 0; page < kMostPages && !finish->isVisible(); ++page) {
    if (list->isVisible()) SelectApplications(*list);
    next();
    m_scenes.Settle();
  }
  Page(wizard, "finish");
  static_cast<QDialog&>(wizard).reject();
}
