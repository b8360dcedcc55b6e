#include "docview/dialogs/dialog.h"

#include <utility>

int CDialog::DoModal() {
  m_result = 0;
  OnInitDialog();
  if (Ended()) return m_result;
  const CDialog* const before = std::exchange(m_host.m_modalDialog, this);
  const int result = m_host.RunDialog(*this);
  m_host.m_modalDialog = before;
  return result;
}
