#include "docview/sheet/property_page.h"

#include <utility>

#include "docview/sheet/property_sheet.h"

CPropertyPage::CPropertyPage(Host& host, unsigned id, std::string caption)
    : m_host(host), m_id(id), m_caption(std::move(caption)) {}

void CPropertyPage::SetModified(bool modified) {
  m_modified = modified;
  if (m_sheet) m_sheet->ShowState();
}

bool CPropertyPage::UpdateData(bool take) {
  if (!m_face) return true;
  if (take) return m_face->TakeData();
  m_face->ShowData();
  return true;
}

void CPropertyPage::SetFocus(unsigned control) {
  if (m_face) m_face->SetFocus(control);
}
