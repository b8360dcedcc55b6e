// A dialog's state and rules. Its face copies the members into widgets, reports events by calling
// the dialog's operations, and closes when the dialog has ended.
//
// Threads  Interface thread.
#pragma once

#include "docview/host.h"

class CDialog {
 public:
  static constexpr int kIdOk = 1;
  static constexpr int kIdCancel = 2;

  explicit CDialog(Host& host) : m_host(host) {}
  virtual ~CDialog() = default;
  CDialog(const CDialog&) = delete;
  CDialog& operator=(const CDialog&) = delete;

  // Calls OnInitDialog, then the host shows the face until the dialog ends. Returns kIdOk,
  // kIdCancel, or the argument of EndDialog. May be run again.
  int DoModal();

  virtual void OnInitDialog() {}
  // The help page for this dialog; empty: the page for the active window.
  virtual const char* HelpTopic() const { return ""; }
  virtual void OnOK() { EndDialog(kIdOk); }
  virtual void OnCancel() { EndDialog(kIdCancel); }

  void EndDialog(int result) { m_result = result; }
  bool Ended() const { return m_result != 0; }
  int Result() const { return m_result; }
  Host& GetHost() const { return m_host; }

 private:
  Host& m_host;
  int m_result = 0;
};
