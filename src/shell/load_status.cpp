#include "shell/load_status.h"

#include <algorithm>
#include <utility>

CLoadStatus::CLoadStatus(Host& host, HANDLE cancelEvent)
    : CDialog(host), m_cancelEvent(std::move(cancelEvent)), m_face(host.ShowModeless(*this)) {}

CLoadStatus::~CLoadStatus() = default;

void CLoadStatus::SetCaption(const std::string& caption) {
  m_caption = caption;
  ShowState();
}

void CLoadStatus::SetUp(const std::string& path, std::uint32_t size) {
  m_path = path;
  m_range = size;
  m_position = std::min(m_position, m_range);
  ShowState();
}

// Two loads may share the box: a position in the longer file may be beyond the end of the shorter
// one.
void CLoadStatus::SetPosition(std::uint32_t position) {
  m_position = std::min(position, m_range);
  ShowState();
}

void CLoadStatus::OnCancel() {
  if (m_cancelEvent) m_cancelEvent->Set();
}

void CLoadStatus::ShowState() {
  if (m_face) m_face->UpdateData();
}
