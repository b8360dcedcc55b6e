#include "listview/source/locate_wait.h"

namespace {

LocateWait* g_standing = nullptr;

}  // namespace

LocateWait::LocateWait(Host& host) : CDialog(host), m_before(g_standing) {
  g_standing = this;
}

LocateWait::~LocateWait() {
  g_standing = m_before;
}

bool LocateWait::CancelStanding() {
  if (!g_standing) return false;
  g_standing->OnCancel();
  return true;
}
