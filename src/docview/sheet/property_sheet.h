// A property sheet, or a wizard: several pages in one modal window, one of them in front.
//
// Sheet    The user chooses pages by their tabs. OK and Apply ask OnKillActive of the page in
//          front. If it returns true, OnOK is called for each page that was shown, in the order of
//          the pages. OK then closes the sheet. Cancel calls OnCancel for the same pages.
// Wizard   Back and Next ask the page in front for the next page (CPropertyPage), then ask its
//          OnKillActive. Finish closes the wizard with kIdOk. A page may also call EndDialog. The
//          title is the caption of the page in front.
// Posted   SetWizardButtons and SetTitle take effect when the host runs its posted calls. The page
//          that calls them in OnSetActive is then in front with its caption as the title. They also
//          take effect before the next press of a button. Closing the window drops the rest.
// Owner    Borrows its pages, which outlive it, and its face.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "docview/dialogs/dialog.h"
#include "docview/sheet/property_page.h"

// The window of a sheet. It makes the windows of all pages when it is made, so that its size fits
// the largest page.
class PropertySheetFace {
 public:
  virtual ~PropertySheetFace() = default;
  // REQUIRES: a page of this place.
  virtual PropertyPageFace& Page(std::size_t place) = 0;
  // Brings the page to the front. For the first page, and for every page of a wizard, the first
  // control gets the focus. In a wizard a page without controls gives it to the default button.
  virtual void ShowPage(std::size_t place) = 0;
  // Copies title, current tab and buttons into the window.
  virtual void UpdateData() = 0;
};

// Flags of SetWizardButtons.
enum WizardButton : unsigned { PSWIZB_BACK = 1, PSWIZB_NEXT = 2, PSWIZB_FINISH = 4 };

class CPropertySheet : public CDialog {
 public:
  CPropertySheet(Host& host, std::string title, std::size_t firstPage = 0);

  // REQUIRES: the window is not open.
  void AddPage(CPropertyPage& page);
  void SetWizardMode() { m_wizard = true; }

  bool IsWizard() const { return m_wizard; }
  const std::vector<CPropertyPage*>& Pages() const { return m_pages; }
  // Null while the window is not open.
  CPropertyPage* GetActivePage() const { return m_face ? m_pages[m_active] : nullptr; }
  std::size_t GetActiveIndex() const { return m_active; }
  const std::string& Title() const { return m_title; }
  // What the title will be when all that is posted has taken effect.
  const std::string& ComingTitle() const { return m_comingTitle; }
  // With PSWIZB_FINISH, Finish replaces Next.
  unsigned WizardButtons() const { return m_buttons; }
  bool CanApply() const;

  // Posted. A wizard opens with Back and Next enabled.
  void SetWizardButtons(unsigned buttons);
  void SetTitle(std::string title);

  // The window was made: shows the first page. REQUIRES: the sheet has pages.
  void Open(PropertySheetFace& face);
  // The window is destroyed.
  void Close();
  // Copies the state into the window, if there is one.
  void ShowState();

  void OnInitDialog() override;
  // Called by the face for what the user does. A disabled button does nothing. In a wizard OnOK is
  // Finish or Next.
  bool SetActivePage(std::size_t place);  // false: the page in front refused
  void OnOK() override;
  void OnCancel() override;
  void OnApply();
  void OnBack();
  void OnNext();
  void OnFinish();

 private:
  using Ask = int (CPropertyPage::*)();
  void Step(WizardButton button, Ask ask, std::size_t inOrder);
  bool Leave();
  void Show(std::size_t place);
  bool ApplyPages();
  std::size_t PlaceOf(int id) const;
  void PostChange(std::function<void()> change);
  void TakePosted();

  const std::string m_ownTitle;
  const std::size_t m_firstPage;
  bool m_wizard = false;
  std::vector<CPropertyPage*> m_pages;
  PropertySheetFace* m_face = nullptr;
  std::size_t m_active = 0;
  std::string m_title, m_comingTitle;
  unsigned m_buttons = PSWIZB_BACK | PSWIZB_NEXT;
  std::deque<std::function<void()>> m_posted;
  std::shared_ptr<bool> m_showing;  // destroyed with the window; posted calls check it
};
