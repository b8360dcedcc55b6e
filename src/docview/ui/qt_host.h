// The host on the screen.
//
// Dialogs  A dialog's face is found by the dialog's dynamic type, so each type must be registered
//          before a dialog runs. Modal loops keep timers and posted calls running.
// Cursor   Under a wait cursor, boxes and dialogs show the normal one.
// Threads  See Host.
#pragma once

#include <QPointer>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <typeindex>
#include <vector>

#include "docview/host.h"
#include "docview/ui/call_queue.h"
#include "docview/ui/qt_dialog_face.h"

class QtMessageBox;

class QtHost final : public Host {
 public:
  QtHost();  // needs the application object
  // Closes the boxes that are still open, as if they were answered. Calls not yet run are dropped.
  ~QtHost() override;

  // `Face`, a QtDialogFace, is made with (Dialog&, QWidget* parent).
  template <class Dialog, class Face>
  void RegisterFace() {
    m_faces[typeid(Dialog)] = [](CDialog& dialog, QWidget* parent) -> QtDialogFace* {
      return new Face(static_cast<Dialog&>(dialog), parent);
    };
  }

  // Is a modal box or dialog open? Then the main window's documents must not be closed: Qt blocks
  // input to other windows, but not their close.
  static bool InModal();
  // Where the places of dialogs are stored; null: nowhere.
  void SetPlaces(std::unique_ptr<DialogPlaces> places) { m_places = std::move(places); }
  // The window over which boxes and dialogs appear.
  void SetMainWidget(QWidget* widget) { m_mainWidget = widget; }

  BoxAnswer MessageBox(const MessageBoxRequest& request) override;
  void PostBox(MessageBoxRequest request, std::function<void()> closed) override;
  std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest& request) override;
  int RunDialog(CDialog& dialog) override;
  std::unique_ptr<DialogFace> ShowModeless(CDialog& dialog) override;
  bool PutOnClipboard(const std::string& text) override;
  void OpenMenu(const std::vector<MenuChoice>& choices, int screenXPx, int screenYPx,
                std::function<void(std::size_t)> chosen) override;
  void BeginWaitCursor() override;
  void EndWaitCursor() override;
  void Post(std::function<void()> call) override;
  TimerId SetTimer(unsigned milliseconds, std::function<void()> tick) override;
  void KillTimer(TimerId timer) override;

 private:
  using FaceMaker = std::function<QtDialogFace*(CDialog&, QWidget*)>;
  struct Timer {
    std::unique_ptr<QTimer> clock;
    std::function<void()> tick;
  };

  QtDialogFace* MakeFace(CDialog& dialog);
  QWidget* ParentForDialog() const;
  void ShowBox(const MessageBoxRequest& request, std::function<void()> closed);
  void OnTick(TimerId timer);
  void CloseEndedFaces();

  std::map<std::type_index, FaceMaker> m_faces;
  std::unique_ptr<DialogPlaces> m_places;
  std::vector<QPointer<QtDialogFace>> m_open;
  std::map<QtMessageBox*, std::function<void()>> m_postedBoxes;
  std::map<TimerId, Timer> m_timers;
  TimerId m_lastTimer = 0;
  QPointer<QWidget> m_mainWidget;
  CallQueue m_calls;
};
