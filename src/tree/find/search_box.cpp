#include "tree/find/search_box.h"

#include <utility>

namespace {

constexpr unsigned kPauseMs = 1;  // between two pieces, for the window's own events

}  // namespace

CSearchBox::CSearchBox(Host& host, std::function<bool()> work)
    : CDialog(host), m_work(std::move(work)) {}

CSearchBox::~CSearchBox() {
  StopTimer();
}

void CSearchBox::OnInitDialog() {
  StopTimer();
  m_timer = GetHost().SetTimer(kPauseMs, [this] { OnTick(); });
}

// A timer may come once more behind the end.
void CSearchBox::OnTick() {
  if (Ended() || !m_work()) return;
  StopTimer();
  EndDialog(kIdOk);
}

void CSearchBox::StopTimer() {
  if (m_timer) GetHost().KillTimer(std::exchange(m_timer, 0));
}
