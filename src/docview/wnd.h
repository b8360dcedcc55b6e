// The base of objects that can receive a numbered message: the frames and the views.
//
// A sent message is a direct call. A posted message is delivered by the host's queue, in order, and
// is dropped if the window has been destroyed meanwhile.
//
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <memory>

#include "docview/commands/command.h"
#include "docview/host.h"

class CWnd : public CCmdTarget {
 public:
  explicit CWnd(Host& host) : m_host(host), m_alive(std::make_shared<CWnd*>(this)) {}

  // Handles a message; 0 when it does not know it.
  virtual std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam);

  std::intptr_t SendMessage(unsigned message, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) {
    return OnMessage(message, wParam, lParam);
  }
  void PostMessage(unsigned message, std::uintptr_t wParam = 0, std::intptr_t lParam = 0);
  // Posts a call that is dropped if this window is destroyed.
  void PostCall(std::function<void()> call);

  Host& GetHost() const { return m_host; }

 private:
  Host& m_host;
  std::shared_ptr<CWnd*> m_alive;
};
