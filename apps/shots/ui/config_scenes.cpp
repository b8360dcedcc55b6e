#include "config_scenes.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTreeView>

#include "config/pages/config_sheet.h"
#include "config/traces/ui/modify_trace_face.h"
#include "config/traces/ui/traces_panel.h"
#include "shell/tessera_app.h"
#include "support/fake_config_client.h"

namespace {

// The traces of a shop, with settings that a person would choose.
void RunShop(FakeMachine& machine) {
  FakeMachine::App& shop =
      machine.Run("shop", {"Cart/Add",         "Cart/Remove",   "Cart/Total",    "Catalogue/Index",
                           "Catalogue/Search", "Mail/Connect",  "Mail/Queue",    "Mail/Retry",
                           "Net/Accept",       "Net/Close",     "Net/Read",      "Net/Tls",
                           "Net/Write",        "Orders/Commit", "Orders/Create", "Orders/Pay",
                           "Orders/Rollback",  "Stock/Reserve", "Stock/Sync",    "Users/Login",
                           "Users/Session"});
  const unsigned words[] = {7,      7,   4, 0, 0, 15, 31,     799, 0, 0,
                            0x0118, 799, 0, 7, 7, 7,  0x0204, 6,   0};
  for (std::size_t trace = 0; trace < std::size(words); ++trace)
    shop.traces[trace].settings = words[trace];
  shop.sinkType = trc_SinkFile;
  shop.sinkName = "/var/log/shop/shop.trc";
  shop.sinkOptions = "flush=1;maxfiles=10;maxsize=50;";
}

QTreeView& List(QWidget& sheet) {
  return *sheet.findChild<QTreeView*>(QStringLiteral("traces"));
}

template <class Widget>
Widget& Control(QWidget& window, unsigned id) {
  return *window.findChild<Widget*>(QString::number(id));
}

void SelectRows(QWidget& sheet, int first, int last) {
  QTreeView& list = List(sheet);
  list.setFocus();
  const QAbstractItemModel& rows = *list.model();
  list.setCurrentIndex(rows.index(first, 0));
  list.selectionModel()->select({rows.index(first, 0), rows.index(last, 2)},
                                QItemSelectionModel::Select);
}

}  // namespace

ConfigScenes::ConfigScenes(CTesseraApp& tessera, ShotScenes& scenes)
    : m_tessera(tessera), m_scenes(scenes) {
  RunShop(m_machine);
  m_machine.Run("billing", {});
  m_doc = std::make_unique<CConfigDoc>(tessera.GetHost(), ClientOf(m_machine));
  m_doc->ConnectToMachine("mars");
}

void ConfigScenes::All() {
  Traces();
  NoTraces();
  Modify();
  Sinks();
  Kept();
  Away();
}

void ConfigScenes::Run(const std::string& app, std::function<void(QWidget&)> act) {
  CConfigPropertySheet sheet(m_tessera.GetHost(), *m_doc, *m_doc->AddApplication(app));
  m_scenes.Answer([act = std::move(act)](QWidget& window) {
    act(window);
    window.close();
  });
  sheet.DoModal();
}

void ConfigScenes::Traces() {
  Run("shop", [this](QWidget& sheet) {
    m_scenes.Save(sheet, QStringLiteral("config-traces"));
    SelectRows(sheet, 5, 7);
    m_scenes.Settle();
    m_scenes.Save(sheet, QStringLiteral("config-traces-selected"));
  });
}

void ConfigScenes::NoTraces() {
  Run("billing",
      [this](QWidget& sheet) { m_scenes.Save(sheet, QStringLiteral("config-traces-none")); });
}

void ConfigScenes::Modify() {
  const auto press = [this](QWidget& sheet, int first, int last,
                            std::function<void(QWidget&)> act) {
    SelectRows(sheet, first, last);
    m_scenes.Answer([act = std::move(act)](QWidget& dialog) {
      act(dialog);
      dialog.close();
    });
    Control<QPushButton>(sheet, TracesPanel::kCustom).click();
  };
  Run("shop", [this, press](QWidget& sheet) {
    press(sheet, 5, 6, [this](QWidget& dialog) {
      m_scenes.Save(dialog, QStringLiteral("modify-trace"));
      Control<QRadioButton>(dialog, ModifyTraceFace::kModes).click();
      m_scenes.Save(dialog, QStringLiteral("modify-trace-off"));
    });
  });
}

void ConfigScenes::Sinks() {
  Run("shop", [this](QWidget& sheet) {
    sheet.findChild<QTabWidget*>()->setCurrentIndex(1);
    m_scenes.Settle();
    m_scenes.Save(sheet, QStringLiteral("config-sink-file"));
    Control<QRadioButton>(sheet, CAppSinkCfgPropertyPage::kServer).click();
    m_scenes.Settle();
    m_scenes.Save(sheet, QStringLiteral("config-sink-server"));
  });
}

void ConfigScenes::Kept() {
  FakeMachine::App& shop = m_machine.m_apps["shop"];
  const FakeMachine::App before = shop;
  shop.kept = "Net=max;Orders/Pay=Info+Warn+Error+Stack;*=support";
  shop.sinkType = trc_SinkSocket;
  shop.sinkName = "venus:7447";
  shop.sinkTrouble = "Connection refused";
  shop.startNotes = {{4711, "QUOR_SETTINGS=Mail=developer"}};
  Run("shop", [this](QWidget& sheet) { m_scenes.Save(sheet, QStringLiteral("config-kept")); });
  shop = before;
}

void ConfigScenes::Away() {
  trace_App_i& app = *m_doc->AddApplication("shop");
  m_machine.m_away = true;
  CConfigPropertySheet sheet(m_tessera.GetHost(), *m_doc, app);
  m_scenes.Answer([this](QWidget& window) {
    m_scenes.Save(window, QStringLiteral("config-away"));
    window.close();
  });
  sheet.DoModal();
  m_machine.m_away = false;
}
