// The window of an application's property sheet, and a person before it.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <functional>
#include <string>

#include "config/pages/ui/config_sheet_face.h"
#include "config/traces/ui/modify_trace_face.h"
#include "config/traces/ui/traces_panel.h"
#include "config/ui/machine_face.h"
#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"
#include "support/row_texts.h"

class SheetWindowTest : public testing::Test {
 protected:
  using Act = std::function<void(QDialog&)>;

  SheetWindowTest() {
    m_host.RegisterFace<CConfigPropertySheet, ConfigSheetFace>();
    m_host.RegisterFace<CModifyTraceDialog, ModifyTraceFace>();
    m_host.RegisterFace<CMachineBrowser, MachineBrowserFace>();
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
  int Run(CConfigDoc& doc, trace_App_i& app, const Act& act) {
    OnNext(act);
    CConfigPropertySheet sheet(m_host, doc, app);
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
  static std::string Shown(QDialog& window) { return RowTexts(*List(window).model()); }
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
};
