#include "listview/source/locate_wait.h"

#include <utility>

namespace {

LocateWait* g_standing = nullptr;

}  // namespace

LocateWait::LocateWait(Host& host, std::string recorded, std::string located)
    : CDialog(host),
      m_recorded(std::move(recorded)),
      m_located(std::move(located)),
      m_before(g_standing) {
  g_standing = this;
}

LocateWait::~LocateWait() {
  g_standing = m_before;
}

std::string LocateWait::Reason() const {
  const std::size_t separator = m_recorded.find_last_of("\\/:");
  const std::size_t name = separator == m_recorded.npos ? 0 : separator + 1;
  return kReason + m_recorded.substr(name) + ".";
}

bool LocateWait::CancelStanding() {
  if (!g_standing) return false;
  g_standing->OnCancel();
  return true;
}
