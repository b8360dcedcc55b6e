// The progress box of a load: modeless, one for the whole program at a time.
//
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/win32_handle.h"
#include "docview/dialogs/dialog.h"

class CLoadStatus : public CDialog {
 public:
  // Shows the window. `cancelEvent` is shared: the box may outlive the document.
  CLoadStatus(Host& host, HANDLE cancelEvent);
  ~CLoadStatus() override;

  void SetCaption(const std::string& caption);
  void SetUp(const std::string& path, std::uint32_t size);
  void SetPosition(std::uint32_t position);

  void OnOK() override {}    // Enter must not end the dialog
  void OnCancel() override;  // signals the event; the box stays until the done message

  // The state for the face.
  std::string m_caption;
  std::string m_path;
  std::uint32_t m_range = 0;     // bytes
  std::uint32_t m_position = 0;  // bytes

 private:
  void ShowState();

  HANDLE m_cancelEvent;
  std::unique_ptr<DialogFace> m_face;
};
