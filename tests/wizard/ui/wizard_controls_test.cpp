// The controls of the wizard's pages, each used as a person does, and the words that stand on them.
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTimer>
#include <algorithm>
#include <filesystem>

#include "config/ui/machine_face.h"
#include "support/pending_actions.h"
#include "wizard/ui/wizard_face_fixture.h"
#include "wizard/wizard_texts.h"

namespace {

class WizardControls : public WizardFaceTest {
 protected:
  ~WizardControls() override { std::filesystem::current_path(m_before); }

  void Next(int times = 1) {
    for (; times > 0; --times) Click(Button(QtSheetFace::kNext));
  }
  void Click(QWidget& control) {
    // A radio button or a check box takes a click on its mark.
    const QPoint at =
        control.inherits("QPushButton") ? control.rect().center() : QPoint(8, control.height() / 2);
    QTest::mouseClick(&control, Qt::LeftButton, Qt::NoModifier, at);
    Settle();
  }
  template <class Control>
  Control& Get(unsigned id) {
    return *m_face->findChild<Control*>(QString::number(id));
  }
  QListView& List(const char* name) { return *m_face->findChild<QListView*>(name); }
  // "orders *shop": the lines of a list box, with a star before each selected one.
  std::string Lines(const char* name) {
    const QListView& list = List(name);
    std::string lines;
    for (int row = 0; row < list.model()->rowCount(); ++row) {
      const QModelIndex at = list.model()->index(row, 0);
      lines += (row ? " " : "") + std::string(list.selectionModel()->isSelected(at) ? "*" : "");
      lines += at.data().toString().toStdString();
    }
    return lines;
  }
  void ClickLine(const char* name, const char* text) {
    QListView& list = List(name);
    for (int row = 0; row < list.model()->rowCount(); ++row) {
      const QModelIndex at = list.model()->index(row, 0);
      if (at.data().toString() != QLatin1String(text)) continue;
      QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier,
                        list.visualRect(at).center());
      return Settle();
    }
    FAIL() << text;
  }
  // Acts in the dialog that comes up next.
  void OnDialog(const std::function<void(QDialog&)>& act) {
    auto* const clock = new QTimer(m_face.get());
    QObject::connect(clock, &QTimer::timeout, m_face.get(), [clock, act = MustRun(act)] {
      auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (!dialog) return;
      clock->stop();
      act(*dialog);
    });
    clock->start(5);
  }
  void ChooseFile(const std::string& path) {
    OnDialog([path](QDialog& dialog) {
      EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
      // selectFile() leaves a field that has the focus as it is.
      auto* const name = dialog.findChild<QLineEdit*>("fileNameEdit");
      EXPECT_TRUE(name);
      if (name) name->setText(QString::fromStdString(path));
      dialog.accept();
    });
  }
  static unsigned Stored(const char* name) {
    return NtRegGet(HKEY_CURRENT_USER, kRegWizard, name, 77U);
  }
  // The words that are visible on the page in front, in the order of its layout.
  std::vector<std::string> Words() {
    std::vector<std::pair<int, std::string>> words;
    const QWidget* const page = m_face->findChild<QStackedWidget*>()->currentWidget();
    const auto add = [&](const QWidget& control, const QString& text) {
      if (control.isVisible() && !text.isEmpty())
        words.emplace_back(control.mapTo(page, QPoint()).y(), text.toStdString());
    };
    for (const QLabel* label : page->findChildren<QLabel*>()) add(*label, label->text());
    for (const QAbstractButton* button : page->findChildren<QAbstractButton*>())
      if (!button->inherits("QPushButton")) add(*button, button->text());
    std::stable_sort(words.begin(), words.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> texts;
    for (const auto& [y, text] : words) texts.push_back(text);
    return texts;
  }
  // The machines "db" and "web" on the page of machines.
  void OpenMachines() {
    m_host.RegisterFace<CMachineDlg, MachineFace>();
    m_program.Machine("web").Run("shop", {"Cart/Add"});
    m_program.Machine("db").Run("store", {"Row/Put"});
    Next(2);
    Click(Get<QRadioButton>(CWizNetworkPage::kMode + 1));
    Next();
    for (const char* const machine : {"web", "db"}) {
      OnDialog([machine](QDialog& dialog) {
        QTest::keyClicks(dialog.focusWidget(), machine);
        QTest::keyClick(&dialog, Qt::Key_Return);
      });
      Click(Button(CWizMachinesPage::kAdd));
    }
    ASSERT_EQ(Lines("machines"), "*db web");
  }

 private:
  const std::filesystem::path m_before = std::filesystem::current_path();
};

TEST_F(WizardControls, TheBoxOfTheWelcomePageIsStoredAtOnce) {
  auto& box = Get<QCheckBox>(CWizWelcomePage::kAutoStart);
  EXPECT_TRUE(box.isChecked());
  EXPECT_EQ(Stored("Auto-start"), 77U);
  Click(box);
  EXPECT_EQ(Stored("Auto-start"), 0U);
  Open();
  EXPECT_FALSE(Get<QCheckBox>(CWizWelcomePage::kAutoStart).isChecked());
  Click(Get<QCheckBox>(CWizWelcomePage::kAutoStart));
  EXPECT_EQ(Stored("Auto-start"), 1U);
}

TEST_F(WizardControls, TheSecondTaskLoadsAConfiguration) {
  Next();
  Click(Get<QRadioButton>(CWizSelectPage::kTask + 1));
  ChooseFile(m_folder.File("saved.tcf", "TCF Version 3.2\nAPP: \"orders\"\n"));
  Next();
  EXPECT_TRUE(m_sheet->Ended());
  EXPECT_EQ(m_program.Configs(), 1U);
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
}

TEST_F(WizardControls, TheThirdTaskLoadsTraces) {
  Next();
  Click(Get<QRadioButton>(CWizSelectPage::kTask + 2));
  const std::string path = m_folder.File("saved.trc", "TRC Version 3.1");
  ChooseFile(path);
  Next();
  EXPECT_TRUE(m_sheet->Ended());
  EXPECT_EQ(m_program.Configs(), 0U);
  EXPECT_EQ(m_log.Reported("open "), "open " + path + "\n");
}

TEST_F(WizardControls, DeleteTakesTheSelectedMachine) {
  OpenMachines();
  ClickLine("machines", "web");
  EXPECT_TRUE(Button(CWizMachinesPage::kDelete).isEnabled());
  Click(Button(CWizMachinesPage::kDelete));
  EXPECT_EQ(Lines("machines"), "db");
  EXPECT_FALSE(Button(CWizMachinesPage::kDelete).isEnabled());
  EXPECT_FALSE(m_sheet->m_machines.contains("web"));
  Next();
  EXPECT_EQ(Title(), "Trace Wizard: Applications on db");
}

TEST_F(WizardControls, MachinesThatAreConfiguredTheSameShareOnePageOfAllApplications) {
  OpenMachines();
  auto& box = Get<QCheckBox>(CWizMachinesPage::kIdentical);
  EXPECT_FALSE(box.isChecked());
  Click(box);
  Next();
  EXPECT_EQ(Title(), "Trace Wizard: Applications");
  EXPECT_EQ(Lines("applications"), "shop store");
  EXPECT_EQ(Stored("Identical Machines"), 1U);
  Click(Button(QtSheetFace::kBack));
  Click(box);
  Next();
  EXPECT_EQ(Title(), "Trace Wizard: Applications on db");
  EXPECT_EQ(Stored("Identical Machines"), 0U);
}

TEST_F(WizardControls, LoadShowsTheApplicationsOfAFileAndSelectsThem) {
  Next(3);
  EXPECT_EQ(Lines("applications"), "orders");
  ChooseFile(m_folder.File("saved.tcf", "TCF Version 3.2\nAPP: \"billing\"\n"));
  Click(Button(CWizApplicationPage::kLoad));
  EXPECT_NE(Lines("applications").find("*billing"), std::string::npos) << Lines("applications");
  EXPECT_TRUE(Button(QtSheetFace::kNext).isEnabled());
}

TEST_F(WizardControls, WhatIsKeptForLaterStartsStandsBelowTheTraces) {
  m_program.Machine("localhost").m_apps["orders"].kept = "Net=max";
  m_program.Machine("localhost").Run("shop", {"Cart/Add"});
  Next(3);
  ClickLine("applications", "orders");
  Next();
  EXPECT_EQ(Title(), "Trace Wizard: Traces for orders");
  EXPECT_EQ(Words().back(), "Kept for later starts: Net=max (\"trc forget orders\" takes it back)");
  Click(Button(QtSheetFace::kBack));
  ClickLine("applications", "shop");
  Next();
  EXPECT_EQ(Title(), "Trace Wizard: Traces for shop");
  EXPECT_EQ(Words().size(), 1u);
}

TEST_F(WizardControls, EveryPageShowsItsWords) {
  using Texts = std::vector<std::string>;
  const auto all = [](const auto& paragraphs, const auto& choices) {
    Texts texts(paragraphs.begin(), paragraphs.end());
    texts.insert(texts.end(), choices.begin(), choices.end());
    return texts;
  };
  EXPECT_EQ(Words(), all(WizardTexts::kWelcome, Texts{WizardTexts::kAutoStart}));
  Next();
  EXPECT_EQ(Words(), all(Texts{WizardTexts::kMode}, WizardTexts::kTasks));
  Next();
  EXPECT_EQ(Words(), all(WizardTexts::kNetwork, WizardTexts::kNetworkModes));
  Click(Get<QRadioButton>(CWizNetworkPage::kMode + 1));
  Next();
  EXPECT_EQ(Words(), (Texts{WizardTexts::kMachines, WizardTexts::kIdentical}));
  EXPECT_EQ(Button(CWizMachinesPage::kAdd).text(), QLatin1String(WizardTexts::kAdd));
  EXPECT_EQ(Button(CWizMachinesPage::kDelete).text(), QLatin1String(WizardTexts::kDelete));
  Click(Button(QtSheetFace::kBack));
  Click(Get<QRadioButton>(CWizNetworkPage::kMode));
  Next();
  EXPECT_EQ(Words(), Texts{WizardTexts::kApplications});
  EXPECT_EQ(Button(CWizApplicationPage::kLoad).text(), QLatin1String(WizardTexts::kLoad));
  ClickLine("applications", "orders");
  Next();
  EXPECT_EQ(Words(), Texts{WizardTexts::kTraces});
  Next();
  EXPECT_EQ(Words(), all(WizardTexts::kFinish, Texts{}));
}

}  // namespace
