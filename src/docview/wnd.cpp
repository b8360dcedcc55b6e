#include "docview/wnd.h"

#include <utility>

std::intptr_t CWnd::OnMessage(unsigned, std::uintptr_t, std::intptr_t) {
  return 0;
}

void CWnd::PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  PostCall([this, message, wParam, lParam] { OnMessage(message, wParam, lParam); });
}

void CWnd::PostCall(std::function<void()> call) {
  m_host.Post([alive = std::weak_ptr<CWnd*>(m_alive), call = std::move(call)] {
    if (!alive.expired()) call();
  });
}
