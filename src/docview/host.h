// The one interface to the user and to the interface thread's event loop.
//
// There are three hosts: Qt's (docview/ui), the terminal's (apps/trc/terminal) and a recording one
// for tests, whose transcript shows texts, icons, buttons and order.
//
// Threads  Post and PostBox from any thread; everything else on the interface thread.
// Errors   None: closing a box or a dialog counts as Cancel (or as the only button).
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "docview/file_dialog_request.h"
#include "docview/menu_choice.h"
#include "docview/object.h"

class CDialog;
class CWnd;

enum class BoxIcon { None, Stop, Question, Warning, Information };
enum class BoxButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class BoxAnswer { Ok, Cancel, Yes, No };

struct MessageBoxRequest {
  std::string text;  // UTF-8, plain
  BoxIcon icon = BoxIcon::Warning;
  BoxButtons buttons = BoxButtons::Ok;
  std::string caption = "Tessera";
  std::optional<BoxAnswer> preferred = {};  // the answer of Enter; unset: the first button
};

// The window of a modeless dialog; destroying it closes the window.
class DialogFace {
 public:
  virtual ~DialogFace() = default;
  virtual void UpdateData() = 0;  // copies the dialog's state into the window
};

using TimerId = unsigned;

// How long a part of long work may block the window (docview/dialogs/long_work.h).
struct WorkPieces {
  std::chrono::milliseconds first{200};  // before its box opens
  std::chrono::milliseconds next{40};    // then at a time
};

class Host {
 public:
  virtual ~Host() = default;

  // Application-modal; returns when answered.
  virtual BoxAnswer MessageBox(const MessageBoxRequest& request) = 0;
  // A box that blocks no window, for messages of other threads. `closed` runs on the interface
  // thread.
  virtual void PostBox(MessageBoxRequest request, std::function<void()> closed) = 0;
  // An accepted dialog makes its folder the process's current folder: kept, because a capture then
  // opens its file by its bare name.
  virtual std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest& request) = 0;
  // Shows the dialog's face until the dialog has ended; returns CDialog::Result.
  virtual int RunDialog(CDialog& dialog) = 0;
  virtual std::unique_ptr<DialogFace> ShowModeless(CDialog& dialog) = 0;

  // A text for other programs, UTF-8. False: there is no clipboard.
  virtual bool PutOnClipboard(const std::string& text) = 0;
  // A pop-up menu at this place of the screen. Returns at once; `chosen` runs later, with the place
  // of the choice, and not at all if the user chooses none. A terminal has no menus.
  virtual void OpenMenu(const std::vector<MenuChoice>& /*choices*/, int /*screenXPx*/,
                        int /*screenYPx*/, std::function<void(std::size_t)> /*chosen*/) {}

  virtual void BeginWaitCursor() = 0;  // nests
  virtual void EndWaitCursor() = 0;

  // Queued calls run on the interface thread in the order in which they were posted.
  virtual void Post(std::function<void()> call) = 0;
  virtual TimerId SetTimer(unsigned milliseconds, std::function<void()> tick) = 0;
  virtual void KillTimer(TimerId timer) = 0;

  const WorkPieces& Pieces() const { return m_pieces; }
  void SetPieces(const WorkPieces& pieces) { m_pieces = pieces; }
  // The main window; null before it exists and after its end.
  CWnd* MainWindow() const { return m_mainWindow; }
  void SetMainWindow(CWnd* window) { m_mainWindow = window; }
  // The innermost dialog that runs in DoModal; null: none.
  const CDialog* ModalDialog() const { return m_modalDialog; }

 private:
  friend class CDialog;
  WorkPieces m_pieces;
  CWnd* m_mainWindow = nullptr;
  const CDialog* m_modalDialog = nullptr;
};

class CWaitCursor {
 public:
  explicit CWaitCursor(Host& host) : m_host(host) { m_host.BeginWaitCursor(); }
  ~CWaitCursor() { m_host.EndWaitCursor(); }
  CWaitCursor(const CWaitCursor&) = delete;
  CWaitCursor& operator=(const CWaitCursor&) = delete;

 private:
  Host& m_host;
};
