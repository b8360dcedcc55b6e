#include "docview/sheet/property_sheet.h"

#include <algorithm>
#include <utility>

CPropertySheet::CPropertySheet(Host& host, std::string title, std::size_t firstPage)
    : CDialog(host), m_ownTitle(std::move(title)), m_firstPage(firstPage), m_title(m_ownTitle) {}

void CPropertySheet::AddPage(CPropertyPage& page) {
  page.m_sheet = this;
  m_pages.push_back(&page);
}

void CPropertySheet::OnInitDialog() {
  m_title = m_comingTitle = m_ownTitle;
  m_buttons = PSWIZB_BACK | PSWIZB_NEXT;
  m_posted.clear();
  m_showing = std::make_shared<bool>(true);
  for (CPropertyPage* const page : m_pages) page->m_modified = page->m_begun = false;
}

void CPropertySheet::Open(PropertySheetFace& face) {
  m_face = &face;
  for (std::size_t place = 0; place < m_pages.size(); ++place)
    m_pages[place]->m_face = &face.Page(place);
  Show(std::min(m_firstPage, m_pages.size() - 1));
}

void CPropertySheet::Close() {
  m_face = nullptr;
  m_showing.reset();
  for (CPropertyPage* const page : m_pages) page->m_face = nullptr;
}

void CPropertySheet::ShowState() {
  if (m_face) m_face->UpdateData();
}

void CPropertySheet::Show(std::size_t place) {
  m_active = place;
  CPropertyPage& page = *m_pages[place];
  if (m_wizard) m_title = m_comingTitle = page.Caption();
  if (!std::exchange(page.m_begun, true)) page.OnInitDialog();
  page.OnSetActive();
  page.UpdateData(false);
  if (m_face) m_face->ShowPage(place);
  ShowState();
}

bool CPropertySheet::Leave() {
  CPropertyPage* const page = GetActivePage();
  return page && page->OnKillActive() && m_face && !Ended();
}

bool CPropertySheet::SetActivePage(std::size_t place) {
  if (place >= m_pages.size() || !m_face || Ended()) return false;
  if (place == m_active) return true;
  const bool left = Leave();
  if (left)
    Show(place);
  else
    ShowState();
  return left;
}

bool CPropertySheet::ApplyPages() {
  if (!Leave()) return false;
  for (CPropertyPage* const page : m_pages) page->m_modified = false;
  for (CPropertyPage* const page : m_pages)
    if (page->m_begun) page->OnOK();
  return true;
}

void CPropertySheet::OnOK() {
  if (!m_wizard) {
    if (ApplyPages()) EndDialog(kIdOk);
    return;
  }
  TakePosted();
  if (m_buttons & PSWIZB_FINISH)
    OnFinish();
  else
    OnNext();
}

void CPropertySheet::OnCancel() {
  for (CPropertyPage* const page : m_pages)
    if (page->m_begun) page->OnCancel();
  CDialog::OnCancel();
}

bool CPropertySheet::CanApply() const {
  return std::any_of(m_pages.begin(), m_pages.end(),
                     [](const CPropertyPage* page) { return page->IsModified(); });
}

void CPropertySheet::OnApply() {
  if (!CanApply() || !ApplyPages()) return;
  if (CPropertyPage* const page = GetActivePage()) page->UpdateData(false);
  ShowState();
}

void CPropertySheet::OnBack() {
  Step(PSWIZB_BACK, &CPropertyPage::OnWizardBack, m_active - 1);
}

void CPropertySheet::OnNext() {
  Step(PSWIZB_NEXT, &CPropertyPage::OnWizardNext, m_active + 1);
}

// Stays where there is no such page. The place before the first page is a very large number.
void CPropertySheet::Step(WizardButton button, Ask ask, std::size_t inOrder) {
  TakePosted();
  CPropertyPage* const page = GetActivePage();
  if (!page || Ended() || !(m_buttons & button)) return;
  const int answer = (page->*ask)();
  if (answer == CPropertyPage::kWizardStay || Ended()) return;
  const std::size_t to = answer == CPropertyPage::kWizardInOrder ? inOrder : PlaceOf(answer);
  if (to < m_pages.size() && Leave()) Show(to);
}

void CPropertySheet::OnFinish() {
  TakePosted();
  CPropertyPage* const page = GetActivePage();
  if (!page || Ended() || !(m_buttons & PSWIZB_FINISH)) return;
  if (page->OnWizardFinish() == CPropertyPage::kWizardInOrder && !Ended()) EndDialog(kIdOk);
}

std::size_t CPropertySheet::PlaceOf(int id) const {
  const auto page = std::find_if(m_pages.begin(), m_pages.end(), [id](const CPropertyPage* each) {
    return each->Id() == static_cast<unsigned>(id);
  });
  return static_cast<std::size_t>(page - m_pages.begin());
}

void CPropertySheet::SetWizardButtons(unsigned buttons) {
  PostChange([this, buttons] { m_buttons = buttons; });
}

void CPropertySheet::SetTitle(std::string title) {
  m_comingTitle = title;
  PostChange([this, title = std::move(title)] { m_title = title; });
}

void CPropertySheet::PostChange(std::function<void()> change) {
  m_posted.push_back(std::move(change));
  GetHost().Post([this, showing = std::weak_ptr<bool>(m_showing)] {
    if (!showing.expired()) TakePosted();
  });
}

void CPropertySheet::TakePosted() {
  if (m_posted.empty()) return;
  while (!m_posted.empty()) {
    const std::function<void()> change = std::move(m_posted.front());
    m_posted.pop_front();
    change();
  }
  ShowState();
}
