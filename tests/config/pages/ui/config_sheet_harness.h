// The property sheet of an application on the screen, on a machine without a process.
#pragma once

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <functional>
#include <memory>
#include <string>

#include "config/pages/ui/config_sheet_face.h"
#include "config/traces/ui/modify_trace_face.h"
#include "config/traces/ui/traces_panel.h"
#include "config/ui/machine_face.h"
#include "docview/ui/qt_host.h"
#include "support/fake_machine.h"
#include "support/pending_actions.h"

class ConfigSheetFaceTest : public testing::Test {
 protected:
  using Act = std::function<void(QDialog&)>;

  ConfigSheetFaceTest() {
    m_host.RegisterFace<CConfigPropertySheet, ConfigSheetFace>();
    m_host.RegisterFace<CModifyTraceDialog, ModifyTraceFace>();
    m_host.RegisterFace<CMachineBrowser, MachineBrowserFace>();
    ConfigClient client;
    client.connect = [this](const std::string& host, std::string* why) {
      return m_machine.Connect(host, why);
    };
    client.open = [this](const std::string&, const std::string& app) {
      return m_machine.Open(app, nullptr);
    };
    m_doc = std::make_unique<CConfigDoc>(m_host, std::move(client));
    m_doc->ConnectToMachine("web");
    m_machine.Run("orders", {"Net/Open", "Net/Close", "Disk/Read"});
    m_app = m_doc->AddApplication("orders");
  }

  // Runs once another modal window is up; what is still open then is closed.
  static void OnNext(const Act& act) {
    QWidget* const before = QApplication::activeModalWidget();
    auto* const clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, before, act = MustRun(act)] {
      auto* const window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (!window || window == before || !window->isActiveWindow()) return;
      clock->stop();
      clock->deleteLater();
      act(*window);
      if (window->isVisible()) window->reject();
    });
    clock->start(1);
  }
  int Run(const Act& act) {
    OnNext(act);
    CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
    return sheet.DoModal();
  }
  template <class Widget>
  static Widget& Control(QDialog& window, unsigned id) {
    return *window.findChild<Widget*>(QString::number(id));
  }
  static QTreeView& List(QDialog& window) { return *window.findChild<QTreeView*>("traces"); }
  static QPushButton& Apply(QDialog& window) {
    return Control<QPushButton>(window, QtSheetFace::kApply);
  }
  // "Net|Open|Off" for each row, separated by blanks.
  static std::string Shown(QDialog& window) {
    const QAbstractItemModel& rows = *List(window).model();
    QStringList texts;
    for (int row = 0; row < rows.rowCount(); ++row) {
      QStringList cells;
      for (int column = 0; column < rows.columnCount(); ++column)
        cells << rows.index(row, column).data().toString();
      texts << cells.join('|');
    }
    return texts.join(' ').toStdString();
  }
  static void ClickHeading(QDialog& window, int column) {
    QHeaderView* const header = List(window).header();
    const int x = header->sectionViewportPosition(column) + header->sectionSize(column) / 2;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {x, header->height() / 2});
  }
  // Answers a message box with its button that says this; gives its text.
  static void AnswerBox(const QString& button, QString* text) {
    OnNext([button, text](QDialog& box) {
      *text = box.property("text").toString();
      for (QPushButton* const each : box.findChildren<QPushButton*>())
        if (each->text().remove('&') == button) return each->click();
      FAIL() << "no such button";
    });
  }

  QtHost m_host;
  FakeMachine m_machine;
  std::unique_ptr<CConfigDoc> m_doc;
  trace_App_i* m_app = nullptr;
};
