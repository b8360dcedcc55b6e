#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QTest>
#include <QTreeView>
#include <filesystem>
#include <functional>

#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"
#include "support/temp_dir.h"

namespace {

class FileDialogTest : public testing::Test {
 protected:
  FileDialogTest() : m_before(std::filesystem::current_path()) {
    std::filesystem::current_path(m_dir.Path());
  }
  ~FileDialogTest() override { std::filesystem::current_path(m_before); }

  using Person = std::function<void(QFileDialog&)>;
  std::optional<FileDialogAnswer> Run(const FileDialogRequest& request, const Person& person) {
    m_host.Post(MustRun([person] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(dialog);
      person(*dialog);
      if (dialog->isVisible()) dialog->reject();
    }));
    return m_host.RunFileDialog(request);
  }
  // Types a name and accepts; gives the text of a question that came up, answered with `button`.
  std::string Accept(QFileDialog& dialog, const std::string& name,
                     QMessageBox::StandardButton button = QMessageBox::Ok) {
    std::string asked;
    dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(name));
    m_host.Post([&asked, button] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!box) return;
      asked = box->text().toStdString();
      box->button(button)->click();
    });
    QMetaObject::invokeMethod(&dialog, "accept", Qt::DirectConnection);
    bool turned = false;
    m_host.Post([&turned] { turned = true; });
    EXPECT_TRUE(QTest::qWaitFor([&turned] { return turned; }));
    return asked;
  }

  TempDir m_dir;
  const std::filesystem::path m_before;
  QtHost m_host;
};

const FileDialogRequest kSave = {.save = true,
                                 .title = "Save Copy As",
                                 .defaultExtension = ".trc",
                                 .suggestedName = "",
                                 .filters = {{"Trace Files (*.trc)", "*.trc"}},
                                 .boxes = {}};
const FileDialogRequest kOpen = {.save = false,
                                 .title = "Open",
                                 .defaultExtension = "",
                                 .suggestedName = "",
                                 .filters = {{"Source Files (*.c; *.cpp)", "*.c; *.cpp"}},
                                 .boxes = {}};

}  // namespace

TEST_F(FileDialogTest, TheDefaultExtensionIsAppendedToEveryNameThatHasNone) {
  auto answer = Run(kSave, [&](QFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Save Copy As");
    EXPECT_EQ(Accept(dialog, "web"), "");
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("web.trc"));
  answer = Run(kSave, [&](QFileDialog& dialog) { Accept(dialog, "WEB.TRC"); });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("WEB.TRC"));
}

TEST_F(FileDialogTest, AProposedNameWithDotsGetsTheExtensionAndIsAskedAboutWithIt) {
  m_dir.File("Traces sent to 127.0.0.1.trc", "kept");
  FileDialogRequest request = kSave;
  request.suggestedName = "Traces sent to 127.0.0.1";
  std::string asked;
  const auto answer = Run(request, [&](QFileDialog& dialog) {
    m_host.Post([&asked] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!box) return;
      asked = box->text().toStdString();
      box->button(QMessageBox::Yes)->click();
    });
    QTest::keyClick(dialog.findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("Traces sent to 127.0.0.1.trc"));
  EXPECT_NE(asked.find("127.0.0.1.trc"), std::string::npos) << asked;
}

TEST_F(FileDialogTest, TheFilterThatIsChosenNamesTheExtension) {
  FileDialogRequest request = kSave;
  request.filters = {{"Trace Files (*.trc)", "*.trc"}, {"Text Files (*.txt)", "*.txt"}};
  const auto answer = Run(request, [&](QFileDialog& dialog) {
    auto* const types = dialog.findChild<QComboBox*>("fileTypeCombo");
    ASSERT_TRUE(types);
    types->setFocus();
    QTest::keyClick(types, Qt::Key_Down);
    Accept(dialog, "web.1");
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("web.1.txt"));
}

TEST_F(FileDialogTest, AFileThatIsSelectedInTheListDoesNotTakeThePlaceOfTheTypedName) {
  m_dir.File("old.trc", "kept");
  FileDialogRequest request = kSave;
  request.suggestedName = m_dir.File("old.trc");
  const auto answer = Run(request, [&](QFileDialog& dialog) {
    auto* const files = dialog.findChild<QTreeView*>("treeView");
    ASSERT_TRUE(QTest::qWaitFor([&] { return files->selectionModel()->hasSelection(); }));
    const QItemSelection selected = files->selectionModel()->selection();
    auto* const name = dialog.findChild<QLineEdit*>("fileNameEdit");
    name->selectAll();
    QTest::keyClicks(name, "new.1");
    // As when the list is read late: the selection comes after the typing.
    files->selectionModel()->select(selected, QItemSelectionModel::Select);
    name->setText("new.1");
    QMetaObject::invokeMethod(&dialog, "accept", Qt::DirectConnection);
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("new.1.trc"));
}

TEST_F(FileDialogTest, TheNameOfAFolderOpensItAndStaysAFolder) {
  std::filesystem::create_directory(m_dir.File("sub.d"));
  Run(kSave, [&](QFileDialog& dialog) {
    Accept(dialog, "sub.d");
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.directory().absolutePath().toStdString(), m_dir.File("sub.d"));
  });
}

TEST_F(FileDialogTest, TheOverwriteQuestionIsAskedForTheFinalName) {
  m_dir.File("web.trc", "old");
  auto answer = Run(kSave, [&](QFileDialog& dialog) {
    const std::string asked = Accept(dialog, "web", QMessageBox::No);
    EXPECT_NE(asked.find("web.trc"), std::string::npos) << asked;
    EXPECT_TRUE(dialog.isVisible()) << "No keeps the dialog";
  });
  EXPECT_FALSE(answer);
  answer = Run(kSave, [&](QFileDialog& dialog) { Accept(dialog, "web", QMessageBox::Yes); });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("web.trc"));
}

TEST_F(FileDialogTest, AFileWithoutTheExtensionIsNotAskedAbout) {
  m_dir.File("web", "another file");
  const auto answer =
      Run(kSave, [&](QFileDialog& dialog) { EXPECT_EQ(Accept(dialog, "web"), ""); });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("web.trc"));
}

TEST_F(FileDialogTest, AFolderThatDoesNotExistIsRefused) {
  const auto answer = Run(kSave, [&](QFileDialog& dialog) {
    const std::string said = Accept(dialog, m_dir.File("none/web.trc"));
    EXPECT_NE(said.find("The folder does not exist."), std::string::npos) << said;
    EXPECT_TRUE(dialog.isVisible());
  });
  EXPECT_FALSE(answer);
}

// The rights that an administrator has are put aside as long as this exists.
class WithoutPrivileges {
 public:
  WithoutPrivileges() {
    if (m_needed && setresuid(kNobody, kNobody, 0) != 0) ADD_FAILURE() << "still privileged";
  }
  ~WithoutPrivileges() {
    if (!m_needed) return;
    if (setresuid(0, 0, 0) != 0) ADD_FAILURE() << "privileges lost";
    prctl(PR_SET_DUMPABLE, 1);  // a change of user ends what a search for leaks needs
  }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  const bool m_needed = geteuid() == 0;
};

TEST_F(FileDialogTest, AFolderThatCannotBeEnteredIsRefused) {
  namespace fs = std::filesystem;
  fs::permissions(m_dir.Path(), fs::perms(0755));
  fs::create_directory(m_dir.File("closed"));
  fs::permissions(m_dir.File("closed"), fs::perms(0600));
  {
    const WithoutPrivileges nobody;
    const auto answer = Run(kSave, [&](QFileDialog& dialog) {
      const std::string said = Accept(dialog, m_dir.File("closed/web.trc"));
      EXPECT_NE(said.find("The folder cannot be entered."), std::string::npos) << said;
      EXPECT_TRUE(dialog.isVisible());
    });
    EXPECT_FALSE(answer);
  }
  fs::permissions(m_dir.File("closed"), fs::perms(0700));
}

TEST_F(FileDialogTest, AFileToOpenMustExist) {
  const auto answer = Run(kOpen, [&](QFileDialog& dialog) {
    EXPECT_NE(Accept(dialog, "missing.c"), "");
    EXPECT_TRUE(dialog.isVisible());
  });
  EXPECT_FALSE(answer);
}

TEST_F(FileDialogTest, SeveralPatternsPartedBySemicolonsAndBlanksAreOneFilter) {
  Run(kOpen, [&](QFileDialog& dialog) {
    EXPECT_EQ(dialog.nameFilters().value(0), "Source Files (*.c; *.cpp) (*.c *.cpp)");
    EXPECT_TRUE(dialog.testOption(QFileDialog::HideNameFilterDetails));
    EXPECT_TRUE(dialog.testOption(QFileDialog::DontUseNativeDialog));
  });
}

TEST_F(FileDialogTest, AnAcceptedDialogMakesItsFolderTheCurrentOne) {
  std::filesystem::create_directory(m_dir.File("sub"));
  m_dir.File("sub/a.c", "x");
  const auto answer =
      Run(kOpen, [&](QFileDialog& dialog) { Accept(dialog, m_dir.File("sub/a.c")); });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->path, m_dir.File("sub/a.c"));
  EXPECT_EQ(std::filesystem::current_path().string(), m_dir.File("sub"));
}

TEST_F(FileDialogTest, ACancelledDialogChangesNothing) {
  std::filesystem::create_directory(m_dir.File("sub"));
  const auto answer = Run(kOpen, [&](QFileDialog& dialog) {
    dialog.setDirectory(QString::fromStdString(m_dir.File("sub")));
    dialog.reject();
  });
  EXPECT_FALSE(answer);
  EXPECT_EQ(std::filesystem::current_path().string(), m_dir.Path());
}

TEST_F(FileDialogTest, ASuggestedNameMayHoldAFolder) {
  std::filesystem::create_directory(m_dir.File("sub"));
  FileDialogRequest request = kSave;
  request.suggestedName = m_dir.File("sub/web.trc");
  Run(request, [&](QFileDialog& dialog) {
    EXPECT_EQ(dialog.directory().absolutePath().toStdString(), m_dir.File("sub"));
    EXPECT_EQ(dialog.findChild<QLineEdit*>("fileNameEdit")->text(), "web.trc");
  });
}

TEST_F(FileDialogTest, ANoteCanBeReadAndCopiedWhole) {
  FileDialogRequest request = kOpen;
  request.suggestedName = "/no/such/folder/<b>a.c";
  request.note = {"Recorded path:", "/no/such/folder/<b>a.c"};
  Run(request, [](QFileDialog& dialog) {
    auto* const note = dialog.findChild<QLineEdit*>("note");
    ASSERT_TRUE(note);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_TRUE(note->isVisible());
    EXPECT_EQ(note->text(), "/no/such/folder/<b>a.c");
    EXPECT_GT(note->width(), note->fontMetrics().horizontalAdvance(note->text()));
    EXPECT_LT(note->mapTo(&dialog, QPoint()).y(),
              dialog.findChild<QTreeView*>("treeView")->mapTo(&dialog, QPoint()).y());
    EXPECT_EQ(note->accessibleName(), "Recorded path");
    EXPECT_EQ(note->accessibleDescription(), note->text());
    note->setFocus();
    QTest::keyClick(note, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(note, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), note->text());
    QTest::keyClick(note, Qt::Key_X);
    EXPECT_EQ(note->text(), "/no/such/folder/<b>a.c") << "it is read only";
  });
}

TEST_F(FileDialogTest, WithoutANoteThereIsNoFieldForIt) {
  Run(kOpen, [](QFileDialog& dialog) { EXPECT_FALSE(dialog.findChild<QLineEdit*>("note")); });
}

TEST_F(FileDialogTest, SizesAndDatesOfFilesAreNotCut) {
  m_dir.File("web.trc", std::string(26000, 'x'));
  Run(kSave, [](QFileDialog& dialog) {
    auto* const files = dialog.findChild<QTreeView*>("treeView");
    ASSERT_TRUE(files);
    QModelIndex name;
    ASSERT_TRUE(QTest::qWaitFor([&] {
      name = files->model()->index(0, 0, files->rootIndex());
      return name.isValid();
    }));
    for (const int column : {1, 3}) {
      const QString text = name.siblingAtColumn(column).data().toString();
      EXPECT_FALSE(text.isEmpty());
      EXPECT_TRUE(QTest::qWaitFor([&] {
        return files->columnWidth(column) > files->fontMetrics().horizontalAdvance(text);
      })) << text.toStdString();
    }
  });
}

TEST_F(FileDialogTest, NamesCanBeReadInANarrowDialogAndHaveTheRoomInAWideOne) {
  m_dir.File("orders-of-today.trc", std::string(26000, 'x'));
  const QFont before = QApplication::font();
  QFont large = before;
  large.setPointSize(2 * before.pointSize());
  QApplication::setFont(large);
  Run(kSave, [](QFileDialog& dialog) {
    auto* const files = dialog.findChild<QTreeView*>("treeView");
    ASSERT_TRUE(files);
    QModelIndex name;
    ASSERT_TRUE(QTest::qWaitFor([&] {
      name = files->model()->index(0, 0, files->rootIndex());
      return name.isValid() && !name.siblingAtColumn(3).data().toString().isEmpty();
    }));
    const int letters = files->fontMetrics().horizontalAdvance(name.data().toString());
    for (const int width : {200, 2000, 200}) {
      dialog.resize(width, 300);
      EXPECT_TRUE(QTest::qWaitFor([&] { return files->columnWidth(0) >= letters; })) << width;
      if (width < 2000) continue;
      EXPECT_TRUE(
          QTest::qWaitFor([&] { return files->header()->length() == files->viewport()->width(); }));
    }
  });
  QApplication::setFont(before);
}

// Some files give their bytes only when there is news, and none of a device's are for us.
TEST_F(FileDialogTest, NoFileIsReadToShowItsKind) {
  m_dir.File("program", std::string("\x7F"
                                    "ELF\2\1\1",
                                    7) +
                            std::string(200, '\0'));
  m_dir.File("web.trc", "#!/bin/sh\n");
  ASSERT_EQ(mkfifo(m_dir.File("fifo").c_str(), 0600), 0);
  Run(kSave, [this](QFileDialog& dialog) {
    const auto kind = [&](const char* name) {
      return dialog.iconProvider()->type(QFileInfo(QString::fromStdString(m_dir.File(name))));
    };
    EXPECT_EQ(kind("program"), "File");
    EXPECT_EQ(kind("web.trc"), "trc File");
    EXPECT_EQ(kind("fifo"), "File");
    EXPECT_EQ(kind("."), "Folder");
  });
}

TEST_F(FileDialogTest, AFolderOfFilesThatWaitForTheirWritersOpensAndCloses) {
  FileDialogRequest request = kOpen;
  request.suggestedName = "/proc/version";
  request.filters = {{"All Files (*)", "*"}};
  Run(request, [](QFileDialog& dialog) {
    auto* const files = dialog.findChild<QTreeView*>("treeView");
    ASSERT_TRUE(files);
    EXPECT_TRUE(QTest::qWaitFor([&] { return files->model()->rowCount(files->rootIndex()) > 20; }));
  });
}

TEST_F(FileDialogTest, BoxesStandInTheDialogAndComeBackWithTheirTicks) {
  FileDialogRequest request = kSave;
  request.boxes = {{"Selected rows only", true, false}, {"All columns", false, true}};
  const auto answer = Run(request, [&](QFileDialog& dialog) {
    const auto boxes = dialog.findChildren<QCheckBox*>();
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_EQ(boxes[0]->text(), "Selected rows only");
    EXPECT_TRUE(boxes[0]->isVisible());
    EXPECT_FALSE(boxes[1]->isEnabled());
    boxes[0]->click();
    Accept(dialog, "web");
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->boxes, (std::vector<bool>{true, true}));
}

TEST_F(FileDialogTest, TheSideBarShowsItsNamesWholeAlsoInLargeLetters) {
  const QFont before = QApplication::font();
  QFont large = before;
  large.setPointSize(3 * before.pointSize());
  QApplication::setFont(large);
  FileDialogRequest request;
  request.title = "Open";
  Run(request, [](QFileDialog& dialog) {
    const auto* const places = dialog.findChild<QListView*>("sidebar");
    ASSERT_TRUE(places);
    ASSERT_GT(places->model()->rowCount(), 0);
    int longest = 0;
    for (int row = 0; row < places->model()->rowCount(); ++row) {
      const QModelIndex place = places->model()->index(row, 0);
      ASSERT_FALSE(place.data().toString().isEmpty());
      longest = std::max(longest, places->sizeHintForIndex(place).width());
    }
    EXPECT_GE(places->viewport()->width(), longest);
  });
  QApplication::setFont(before);
}
