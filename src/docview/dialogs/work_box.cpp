#include "docview/dialogs/work_box.h"

#include <utility>

namespace {

constexpr unsigned kPauseMs = 1;  // between two pieces, for the window's own events

}  // namespace

CWorkBox::CWorkBox(Host& host, const LongWorkTexts& texts, LongWork& work)
    : CDialog(host), m_texts(texts), m_work(work) {}

CWorkBox::~CWorkBox() {
  StopTimer();
}

void CWorkBox::OnInitDialog() {
  StopTimer();
  m_timer = GetHost().SetTimer(kPauseMs, [this] { OnTick(); });
}

// A timer may fire once more after the end.
void CWorkBox::OnTick() {
  if (Ended() || !m_work.DoPiece(GetHost().Pieces().next)) return;
  StopTimer();
  EndDialog(kIdOk);
}

void CWorkBox::StopTimer() {
  if (m_timer) GetHost().KillTimer(std::exchange(m_timer, 0));
}
