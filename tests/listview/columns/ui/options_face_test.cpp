#include "listview/columns/ui/options_face.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <functional>

#include "docview/commands/command_ids.h"
#include "docview/ui/qt_host.h"
#include "docview/wnd.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"

namespace {

class OptionsFaceTest : public testing::Test {
 protected:
  OptionsFaceTest() {
    m_host.RegisterFace<COptionsDlg, OptionsFace>();
    g_activeColumns = kDefaultActiveColumns;
    g_traceLimit = 500000;
    g_useUtc = false;
  }
  ~OptionsFaceTest() override {
    g_activeColumns = kDefaultActiveColumns;
    g_traceLimit = 500000;
    g_useUtc = false;
  }

  // Runs the dialog; `person` acts on its window.
  int Run(COptionsDlg& dialog, const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    return dialog.DoModal();
  }
  // Presses OK; gives the text of the message box that came up, or "closed".
  std::string PressOk(QDialog& window, const char* limit) {
    std::string text = "closed";
    window.findChild<QLineEdit*>("1074")->setText(limit);
    m_host.Post([&text] {
      if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        text = box->text().toStdString();
        box->button(QMessageBox::Ok)->click();
      }
    });
    window.findChild<QPushButton*>("1")->click();
    bool turned = false;
    m_host.Post([&turned] { turned = true; });
    EXPECT_TRUE(QTest::qWaitFor([&turned] { return turned; }));
    return window.isVisible() ? text : "closed";
  }

  QtHost m_host;
};

}  // namespace

TEST_F(OptionsFaceTest, HasTheTitleTheGroupsAndTheTextsOfItsControls) {
  COptionsDlg dialog(m_host);
  Run(dialog, [](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Options");
    QStringList groups;
    for (const QGroupBox* group : window.findChildren<QGroupBox*>()) groups << group->title();
    EXPECT_EQ(groups, (QStringList{"Display Colums", "Display Options", "Performance Options"}));
    for (const COptionsDlg::Box& box : COptionsDlg::Boxes())
      EXPECT_EQ(window.findChild<QCheckBox*>(QString::number(box.id))->text(), box.text);
    EXPECT_EQ(window.findChild<QCheckBox*>("1167")->text(), "Use Coordinated Universal Time (UTC)");
    EXPECT_EQ(window.findChild<QLabel*>()->text(),
              "Size of Trace History Buffer for each Monitor:");
    EXPECT_EQ(window.findChild<QPushButton*>("1")->text(), "OK");
    EXPECT_EQ(window.findChild<QPushButton*>("2")->text(), "Cancel");
    EXPECT_EQ(window.findChild<QPushButton*>("57670")->text(), "Help");
  });
}

TEST_F(OptionsFaceTest, TheLimitTellsItsRangeBesideItInItsToolTipAndToAScreenReader) {
  COptionsDlg dialog(m_host);
  Run(dialog, [](QDialog& window) {
    const auto* limit = window.findChild<QLineEdit*>("1074");
    const auto* range = window.findChild<QLabel*>("range");
    ASSERT_TRUE(range);
    EXPECT_EQ(range->text(), "2,500 to 1,000,000");
    EXPECT_TRUE(limit->toolTip().contains(range->text()));
    EXPECT_EQ(limit->accessibleDescription(), range->text());
    EXPECT_GE(range->mapTo(&window, QPoint()).x(),
              limit->mapTo(&window, limit->rect().topRight()).x());
    EXPECT_EQ(range->visibleRegion().boundingRect().size(), range->size()) << "it is not cut";
  });
}

TEST_F(OptionsFaceTest, TheTintsHaveABoxBelowUtc) {
  COptionsDlg dialog(m_host);
  Run(dialog, [&](QDialog& window) {
    auto* const tint = window.findChild<QCheckBox*>("1168");
    ASSERT_TRUE(tint);
    EXPECT_EQ(tint->text(), "Tint rows of warnings and errors");
    EXPECT_TRUE(tint->isChecked());
    tint->click();
    PressOk(window, "3000");
  });
  EXPECT_EQ(dialog.m_tint, 0);
}

TEST_F(OptionsFaceTest, EveryControlHasAnAccessibleName) {
  COptionsDlg dialog(m_host);
  Run(dialog, [](QDialog& window) {
    std::size_t named = 0;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
      if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().isEmpty()) continue;
      EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
      ++named;
    }
    EXPECT_EQ(window.findChild<QLineEdit*>("1074")->accessibleName(),
              "Size of Trace History Buffer for each Monitor");
    // The boxes, UTC, the limit, OK and Cancel.
    EXPECT_GE(named, COptionsDlg::Boxes().size() + 4);
  });
}

TEST_F(OptionsFaceTest, TheBoxTraceIsDisabledAndUntickedThoughTheColumnTraceShows) {
  COptionsDlg dialog(m_host);
  Run(dialog, [](QDialog& window) {
    EXPECT_FALSE(window.findChild<QCheckBox*>("1071")->isEnabled());
    EXPECT_FALSE(window.findChild<QCheckBox*>("1071")->isChecked());
    EXPECT_TRUE(window.findChild<QCheckBox*>("1159")->isChecked());
    EXPECT_FALSE(window.findChild<QCheckBox*>("1041")->isChecked());
    EXPECT_EQ(window.findChild<QLineEdit*>("1074")->text(), "500000");
  });
}

TEST_F(OptionsFaceTest, ALimitOf2499Or1000001IsRefusedWithAMessageAndTheDialogStaysOpen) {
  for (const char* limit : {"2499", "1000001", "0", "9999999999", ""}) {
    COptionsDlg dialog(m_host);
    const int result = Run(dialog, [&](QDialog& window) {
      EXPECT_NE(PressOk(window, limit), "closed") << limit;
      EXPECT_TRUE(window.isVisible()) << limit;
    });
    EXPECT_EQ(result, CDialog::kIdCancel) << limit;
  }
}

TEST_F(OptionsFaceTest, ALimitOf2500Or1000000Passes) {
  for (const unsigned limit : {2500u, 1000000u}) {
    COptionsDlg dialog(m_host);
    const int result = Run(dialog, [&](QDialog& window) {
      EXPECT_EQ(PressOk(window, std::to_string(limit).c_str()), "closed") << limit;
    });
    EXPECT_EQ(result, CDialog::kIdOk);
    EXPECT_EQ(dialog.m_limit, limit);
  }
}

TEST_F(OptionsFaceTest, OkTakesOverWhatTheBoxesHold) {
  COptionsDlg dialog(m_host);
  Run(dialog, [&](QDialog& window) {
    for (const char* id : {"1041", "1159", "1078", "1167"})
      window.findChild<QCheckBox*>(id)->click();
    PressOk(window, "3000");
  });
  EXPECT_EQ(dialog.m_count, 1);
  EXPECT_EQ(dialog.m_severity, 0);
  EXPECT_EQ(dialog.m_ticDifference, 1);
  EXPECT_EQ(dialog.m_utc, 1);
  EXPECT_EQ(dialog.m_application, 1);
  EXPECT_EQ(dialog.m_stack, 0);
}

TEST_F(OptionsFaceTest, CancelEscAndTheCloseButtonChangeNothing) {
  const std::vector<std::function<void(QDialog&)>> ways = {
      [](QDialog& window) { window.findChild<QPushButton*>("2")->click(); },
      [](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); },
      [](QDialog& window) { window.close(); },
  };
  for (const auto& way : ways) {
    COptionsDlg dialog(m_host);
    const int result = Run(dialog, [&](QDialog& window) {
      window.findChild<QCheckBox*>("1041")->click();
      window.findChild<QLineEdit*>("1074")->setText("3000");
      way(window);
      EXPECT_FALSE(window.isVisible());
    });
    EXPECT_EQ(result, CDialog::kIdCancel);
    EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
    EXPECT_EQ(g_traceLimit, 500000u);
  }
}

TEST_F(OptionsFaceTest, TheEditTakesDigitsOnly) {
  COptionsDlg dialog(m_host);
  Run(dialog, [](QDialog& window) {
    auto* edit = window.findChild<QLineEdit*>("1074");
    edit->clear();
    QTest::keyClicks(edit, "-1a2.5");
    EXPECT_EQ(edit->text(), "125");
  });
}

TEST_F(OptionsFaceTest, HelpAndF1SendTheHelpCommandToTheMainWindowAndTheDialogStays) {
  class MainWindow final : public CWnd {
   public:
    explicit MainWindow(Host& host) : CWnd(host) {
      MapCommand(ID_HELP, [this] { ++asked; });
    }
    int asked = 0;
  } main(m_host);
  m_host.SetMainWindow(&main);
  COptionsDlg dialog(m_host);
  Run(dialog, [&](QDialog& window) {
    window.findChild<QPushButton*>("57670")->click();
    QTest::keyClick(&window, Qt::Key_F1);
    EXPECT_TRUE(window.isVisible());
  });
  EXPECT_EQ(main.asked, 2);
  m_host.SetMainWindow(nullptr);
}
