// The real application with its Qt windows, offscreen, on a settings file of its own.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <functional>

#include "documents/trace_file_doc.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "shell/mdi/ui/child_window.h"
#include "shell/tessera_app.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/qt_shell_faces.h"
#include "support/pending_actions.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

constexpr int kPatienceMs = 20000;

inline bool Until(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, kPatienceMs);
}

// Processes all queued events and what these queue: reports of sizes, posted calls.
inline void Settle() {
  for (int round = 0; round < 5; ++round) {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
  }
}

// Runs `act` when a modal dialog is open; `act` must close the dialog.
template <class Act>
void OnModal(Act act) {
  auto* clock = new QTimer(qApp);
  QObject::connect(clock, &QTimer::timeout, qApp, [clock, act = MustRun(act)] {
    QWidget* dialog = QApplication::activeModalWidget();
    if (!dialog) return;
    clock->stop();
    clock->deleteLater();
    act(dialog);
  });
  clock->start(5);
}

// Chooses the file in the file dialog that comes up next. By the field of the name, which has the
// focus then: selectFile() leaves a field with the focus as it is.
inline void ChooseFile(const std::string& path, const std::function<void()>& then = {}) {
  OnModal([path, then](QWidget* dialog) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
    auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
    EXPECT_TRUE(name) << "no file dialog came up";
    if (name) name->setText(QString::fromStdString(path));
    static_cast<QDialog*>(dialog)->accept();
    if (then) then();
  });
}

class ShellTest : public testing::Test {
 protected:
  ShellTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
    g_quickClose = false;
    g_activeColumns = kDefaultActiveColumns;
    m_faces = std::make_unique<QtShellFaces>(m_host, [this] { ++m_closed; });
  }
  ~ShellTest() override {
    m_app.reset();
    m_faces.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    SetSettingsFile("");
  }

  // Starts the application; its window is active.
  void Start(const std::vector<std::string>& arguments = {}) {
    m_app = std::make_unique<CTesseraApp>(m_host, *m_faces);
    ASSERT_TRUE(m_app->InitInstance(arguments));
    // Without a window manager nothing activates the window again after a progress box.
    ASSERT_TRUE(Until([this] {
      if (!Window().isActiveWindow()) Window().activateWindow();
      return Window().isActiveWindow();
    }));
  }
  std::string TraceFile(const std::string& name, int traces) {
    TrcImage image;
    image.Name(7, "web");
    for (int i = 0; i < traces; ++i)
      image.Trace(TraceFields{.text = "trace " + std::to_string(i), .machine = 7, .app = 7});
    const std::string path = m_dir.File(name);
    image.WriteTo(path);
    return path;
  }
  // Opens a file and waits until its traces are rows: the view is notified in a later turn of the
  // loop.
  CTraceFileDoc* Open(const std::string& path) {
    auto* document = static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(path));
    EXPECT_TRUE(Until([document] {
      if (!document || document->m_loading) return !document;
      const auto* const list = static_cast<const CTraceView*>(document->Views().front());
      return list->List().ItemCount() == static_cast<int>(document->m_traces.size());
    }));
    EXPECT_TRUE(Until([this] { return !m_app->Frame()->LoadStatus(); }));
    // Offscreen no window manager activates the window again after the progress box.
    Window().activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&Window()));
    return document;
  }

  CMainFrame& Frame() { return *m_app->Frame(); }
  QtMainFrame& Face() { return static_cast<QtMainFrame&>(*Frame().Face()); }
  MainWindow& Window() { return Face().Window(); }
  ChildWindow* Front() { return Face().Area().Active(); }
  CTraceView* View(const CMDIChildWnd& child) {
    return static_cast<CTraceView*>(child.GetActiveView());
  }
  bool Enabled(unsigned id) {
    CCmdUI ui(id, true, false);
    UpdateCommand(Frame(), ui);
    return ui.IsEnabled();
  }

  TempDir m_dir;
  QtHost m_host;
  std::unique_ptr<QtShellFaces> m_faces;
  std::unique_ptr<CTesseraApp> m_app;
  int m_closed = 0;  // how often the main window was closed finally
};
