#include "docview/dialogs/dialog.h"

int CDialog::DoModal() {
  m_result = 0;
  OnInitDialog();
  if (Ended()) return m_result;
  return m_host.RunDialog(*this);
}
