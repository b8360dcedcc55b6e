// The wizard's window over machines without processes.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "docview/ui/qt_host.h"
#include "settings/registry.h"
#include "support/fake_wizard_program.h"
#include "support/temp_dir.h"
#include "wizard/ui/trace_wizard_face.h"

class WizardFaceTest : public testing::Test {
 protected:
  WizardFaceTest() {
    SetSettingsFile(m_folder.File("settings.ini"));
    m_program.Machine("localhost").Run("orders", {"Net/Open", "Net/Close"});
    Open();
  }
  ~WizardFaceTest() override {
    m_face.reset();
    m_sheet.reset();
    QApplication::setFont(m_font);
    SetSettingsFile("");
  }
  void Open() {
    m_face.reset();
    m_sheet = std::make_unique<CTraceWizardSheet>(m_host, m_program);
    m_sheet->OnInitDialog();  // as a modal run does
    m_face = std::make_unique<TraceWizardFace>(*m_sheet, nullptr);
    m_face->UpdateData();
    m_face->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_face.get()));
    Settle();
  }
  // All that is posted has come.
  void Settle() {
    bool come = false;
    m_host.Post([&come] { come = true; });
    ASSERT_TRUE(QTest::qWaitFor([&come] { return come; }, 20000));
    QApplication::processEvents();
  }
  static bool Fits(const QLabel& label) {
    const int flags = Qt::TextShowMnemonic | (label.wordWrap() ? Qt::TextWordWrap : 0);
    const QRect room(0, 0, label.width(), 10000);
    const QSize text = label.fontMetrics().boundingRect(room, flags, label.text()).size();
    return text.width() <= label.width() && text.height() <= label.height();
  }
  QPushButton& Button(unsigned id) { return *m_face->findChild<QPushButton*>(QString::number(id)); }
  std::string Title() const { return m_face->windowTitle().toStdString(); }
  QString Focus() const { return m_face->focusWidget()->objectName(); }
  void Type(Qt::Key key) {
    QTest::keyClick(m_face->focusWidget(), key);
    Settle();
  }

  const QFont m_font = QApplication::font();
  TempDir m_folder;
  QtHost m_host;
  FrameLog m_log;
  FakeWizardProgram m_program{m_host, m_log};
  std::unique_ptr<CTraceWizardSheet> m_sheet;
  std::unique_ptr<TraceWizardFace> m_face;
};
