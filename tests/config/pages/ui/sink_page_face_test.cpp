#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QToolButton>
#include <QWheelEvent>

#include "config_sheet_harness.h"

namespace {

using Sink = CAppSinkCfgPropertyPage;

class SinkPageFaceTest : public ConfigSheetFaceTest {
 protected:
  SinkPageFaceTest() {
    FakeMachine::App& app = m_machine.m_apps["orders"];
    app.sinkType = trc_SinkFile;
    app.sinkName = "/logs/orders.trc";
    app.sinkOptions = "flush=1;maxfiles=3;maxsize=20;";
  }
  // Opens the sheet and leads to this page by the keyboard.
  int RunSink(const Act& act) {
    return Run([act](QDialog& window) {
      QTest::keyClick(window.focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
      ASSERT_EQ(window.findChild<QTabWidget*>()->currentIndex(), 1);
      act(window);
    });
  }
  static QString Combo(QDialog& window, unsigned id) {
    return Control<QComboBox>(window, id).currentText();
  }
  static QString Field(QDialog& window, unsigned id) {
    return Control<QLineEdit>(window, id).text();
  }
  static void Enter(QWidget& field, const char* text) {
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, text);
  }
  // Of machine, browse, file name, flush, files, size.
  static std::string Enabled(QDialog& window) {
    std::string text;
    for (const unsigned id : {Sink::kMachine, Sink::kBrowse, Sink::kFileName, Sink::kFlush,
                              Sink::kHistoricFiles, Sink::kMaxSize})
      text += Control<QWidget>(window, id).isEnabled() ? '1' : '0';
    return text;
  }
  std::string InForce() const {
    const FakeMachine::App& app = m_machine.m_apps.at("orders");
    return (app.sinkType == trc_SinkFile ? "file " : "server ") + app.sinkName + " " +
           app.sinkOptions;
  }
};

}  // namespace

TEST_F(SinkPageFaceTest, ShowsTheSinkAndTheTextsOfItsControls) {
  RunSink([](QDialog& window) {
    EXPECT_TRUE(Control<QRadioButton>(window, Sink::kFile).isChecked());
    EXPECT_EQ(Field(window, Sink::kFileName), "/logs/orders.trc");
    EXPECT_EQ(Field(window, Sink::kMachine), "localhost");
    EXPECT_TRUE(Control<QCheckBox>(window, Sink::kFlush).isChecked());
    EXPECT_EQ(Combo(window, Sink::kHistoricFiles), "3");
    EXPECT_EQ(Combo(window, Sink::kMaxSize), "20");
    EXPECT_EQ(Enabled(window), "001111");
    QStringList labels;
    for (const QLabel* label : window.findChild<QWidget*>("136")->findChildren<QLabel*>())
      labels << label->text();
    EXPECT_EQ(labels, (QStringList{"&Machine:", "File &Name:", "Number of &Historic Files:",
                                   "Ma&ximum File Size:", "MB"}));
    EXPECT_EQ(Control<QRadioButton>(window, Sink::kServer).text(), "Trace &Server");
    EXPECT_EQ(Control<QRadioButton>(window, Sink::kFile).text(), "&File");
    EXPECT_EQ(Control<QCheckBox>(window, Sink::kFlush).text(), "Force F&lush");
    EXPECT_EQ(Control<QToolButton>(window, Sink::kBrowse).text(), "&...");
    EXPECT_FALSE(Apply(window).isEnabled()) << "showing is no change";
  });
}

TEST_F(SinkPageFaceTest, TheComboBoxesOfferTheirChoicesAndTakeOthers) {
  RunSink([](QDialog& window) {
    const auto& files = Control<QComboBox>(window, Sink::kHistoricFiles);
    const auto& size = Control<QComboBox>(window, Sink::kMaxSize);
    EXPECT_EQ(files.count(), 20);
    EXPECT_EQ(files.itemText(19), "100");
    EXPECT_EQ(size.count(), 9);
    EXPECT_EQ(size.itemText(0), "<none>");
    Enter(Control<QWidget>(window, Sink::kMaxSize), "2");
    EXPECT_EQ(Combo(window, Sink::kMaxSize), "2") << "nothing is completed";
  });
}

TEST_F(SinkPageFaceTest, KeysAloneChooseAServerAndBackKeepsWhatWasTyped) {
  EXPECT_EQ(RunSink([](QDialog& window) {
              QTest::keyClick(&window, Qt::Key_N, Qt::AltModifier);
              EXPECT_EQ(window.focusWidget()->objectName().toUInt(), Sink::kFileName);
              Enter(*window.focusWidget(), "typed");
              QTest::keyClick(&window, Qt::Key_S, Qt::AltModifier);
              EXPECT_EQ(Enabled(window), "110000");
              EXPECT_EQ(Field(window, Sink::kFileName), "typed");
              QTest::keyClick(&window, Qt::Key_M, Qt::AltModifier);
              Enter(*window.focusWidget(), "mars");
              QTest::keyClick(&window, Qt::Key_F, Qt::AltModifier);
              EXPECT_EQ(Enabled(window), "001111");
              EXPECT_EQ(Field(window, Sink::kFileName), "typed");
              EXPECT_EQ(Field(window, Sink::kMachine), "mars");
              QTest::keyClick(&window, Qt::Key_L, Qt::AltModifier);
              QTest::keyClick(&window, Qt::Key_H, Qt::AltModifier);
              Enter(*window.focusWidget(), "7");
              QTest::keyClick(&window, Qt::Key_X, Qt::AltModifier);
              Enter(*window.focusWidget(), "<none>");
              QTest::keyClick(window.focusWidget(), Qt::Key_Return);
            }),
            CDialog::kIdOk);
  EXPECT_EQ(InForce(), "file typed.trc flush=0;maxfiles=7;maxsize=0;");
}

TEST_F(SinkPageFaceTest, TheArrowKeysStepFromTheNumberThatIsShown) {
  RunSink([](QDialog& window) {
    QTest::keyClick(&Control<QWidget>(window, Sink::kHistoricFiles), Qt::Key_Down);
    EXPECT_EQ(Combo(window, Sink::kHistoricFiles), "4");
    QTest::keyClick(&Control<QWidget>(window, Sink::kMaxSize), Qt::Key_Up);
    EXPECT_EQ(Combo(window, Sink::kMaxSize), "10");
  });
}

TEST_F(SinkPageFaceTest, AWheelOverANumberWithoutTheFocusChangesNothing) {
  RunSink([](QDialog& window) {
    auto& box = Control<QComboBox>(window, Sink::kHistoricFiles);
    const auto turn = [&box] {
      QWheelEvent event(box.rect().center(), box.mapToGlobal(box.rect().center()), {}, {0, -120},
                        Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
      QApplication::sendEvent(&box, &event);
    };
    Control<QWidget>(window, Sink::kFileName).setFocus();
    turn();
    EXPECT_EQ(box.currentText(), "3");
    box.setFocus();
    turn();
    EXPECT_EQ(box.currentText(), "4");
  });
}

TEST_F(SinkPageFaceTest, AVeryLongFileNameStaysWhole) {
  const std::string name = "/" + std::string(40000, 'x') + ".trc";
  m_machine.m_apps["orders"].sinkName = name;
  RunSink([&name](QDialog& window) {
    EXPECT_EQ(Field(window, Sink::kFileName).size(), static_cast<int>(name.size()));
    QTest::keyClick(&window, Qt::Key_Escape);
  });
}

TEST_F(SinkPageFaceTest, BytesThatAreNoTextStayAsLongAsNobodyTypesInTheirField) {
  const std::string name = "/logs/caf\xe9.trc";
  m_machine.m_apps["orders"].sinkName = name;
  RunSink([](QDialog& window) {
    Control<QCheckBox>(window, Sink::kFlush).click();
    QTest::keyClick(&window, Qt::Key_Return);
  });
  EXPECT_EQ(InForce(), "file " + name + " flush=0;maxfiles=3;maxsize=20;");
  RunSink([](QDialog& window) {
    Enter(Control<QWidget>(window, Sink::kFileName), "new.trc");
    QTest::keyClick(&window, Qt::Key_Return);
  });
  EXPECT_EQ(InForce(), "file new.trc flush=0;maxfiles=3;maxsize=20;");
}

TEST_F(SinkPageFaceTest, EachControlEnablesApply) {
  for (const unsigned id :
       {Sink::kFileName, Sink::kHistoricFiles, Sink::kMaxSize, Sink::kFlush, Sink::kServer}) {
    RunSink([id](QDialog& window) {
      auto& control = Control<QWidget>(window, id);
      if (auto* const button = qobject_cast<QAbstractButton*>(&control))
        button->click();
      else
        Enter(control, "1");
      EXPECT_TRUE(Apply(window).isEnabled()) << id;
    });
  }
}

TEST_F(SinkPageFaceTest, ABadNumberHoldsTheUserOnThePageWithTheFocusInItsField) {
  QString text;
  RunSink([&text](QDialog& window) {
    Enter(Control<QWidget>(window, Sink::kMaxSize), "1001");
    Control<QWidget>(window, Sink::kFileName).setFocus();
    AnswerBox("OK", &text);
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(text, "Max file size must be from 1 to 1000 or '<none>'");
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.focusWidget()->objectName().toUInt(), Sink::kMaxSize);
    text.clear();
    AnswerBox("OK", &text);
    window.findChild<QTabWidget*>()->setCurrentIndex(0);
    EXPECT_EQ(window.findChild<QTabWidget*>()->currentIndex(), 1);
    EXPECT_EQ(text, "Max file size must be from 1 to 1000 or '<none>'");
  });
  EXPECT_EQ(InForce(), "file /logs/orders.trc flush=1;maxfiles=3;maxsize=20;");
}

TEST_F(SinkPageFaceTest, ANameWithoutAnExtensionIsShownWithOneWhenThePageIsLeft) {
  RunSink([](QDialog& window) {
    Enter(Control<QWidget>(window, Sink::kFileName), "/logs/new");
    window.findChild<QTabWidget*>()->setCurrentIndex(0);
    EXPECT_EQ(window.findChild<QTabWidget*>()->currentIndex(), 0);
    EXPECT_EQ(Field(window, Sink::kFileName), "/logs/new.trc");
  });
}

TEST_F(SinkPageFaceTest, TheBrowserWritesTheChosenMachineIntoTheField) {
  RunSink([](QDialog& window) {
    QTest::keyClick(&window, Qt::Key_S, Qt::AltModifier);
    Enter(Control<QWidget>(window, Sink::kMachine), "typed");
    OnNext([](QDialog& browser) {
      auto* const machines = browser.findChild<QListWidget*>("machines");
      ASSERT_TRUE(machines);
      ASSERT_GT(machines->count(), 0);
      machines->setCurrentRow(0);
      QTest::keyClick(&browser, Qt::Key_Return);
    });
    Control<QToolButton>(window, Sink::kBrowse).click();
    EXPECT_NE(Field(window, Sink::kMachine), "typed");
    EXPECT_NE(Field(window, Sink::kMachine), "");
  });
}
