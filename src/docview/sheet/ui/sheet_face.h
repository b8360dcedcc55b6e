// The windows of a CPropertySheet: with tabs, and as a wizard.
//
// Object names: "sheet" or "wizard", the pages' ids; the buttons' are CDialog's ids and those
// below.
//
// Owner    Borrows the sheet, which outlives it; owns the pages' faces.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <vector>

#include "docview/sheet/property_sheet.h"
#include "docview/sheet/ui/page_face.h"
#include "docview/sheet/ui/unseen_presses.h"
#include "docview/ui/qt_dialog_face.h"

class QHBoxLayout;
class QPushButton;
class QStackedWidget;
class QTabWidget;

class QtSheetFace : public QtDialogFace, public PropertySheetFace {
 public:
  // Ids of the buttons beside OK and Cancel.
  static constexpr unsigned kApply = 0x3021, kBack = 0x3023, kNext = 0x3024, kFinish = 0x3025;

  ~QtSheetFace() override;
  PropertyPageFace& Page(std::size_t place) override { return *m_pages[place]; }
  // Shows the title; a wide one is cut in its middle. Screen readers get all of it.
  void UpdateData() override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  QtSheetFace(CPropertySheet& sheet, QWidget* parent, const PageFaces& faces);

  CPropertySheet& m_sheet;
  std::vector<QtPageFace*> m_pages;
};

class TabbedSheetFace : public QtSheetFace {
 public:
  TabbedSheetFace(CPropertySheet& sheet, QWidget* parent, const PageFaces& faces);
  void ShowPage(std::size_t place) override;
  void UpdateData() override;

 private:
  void OnTab(int place);
  QTabWidget* m_tabs;
  QPushButton* m_apply;
  bool m_shown = false;  // the first page was shown
};

// Enter is Next or Finish, except on Back and Cancel. What the user presses while a step is at
// work, a key that is held, and the second press of a double click on Back, Next or Finish press
// no button: the next page would be passed unseen.
class WizardFace : public QtSheetFace {
 public:
  WizardFace(CPropertySheet& sheet, QWidget* parent, const PageFaces& faces);
  void ShowPage(std::size_t place) override;
  void UpdateData() override;

 protected:
  // Puts it left of the pages.
  void AddPicture(QWidget& picture);
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Do(const std::function<void()>& step);
  bool IsBlindPress(const QEvent& event);
  QPushButton* MakeStep(unsigned id, const char* text, std::function<void()> step);
  void LayOut(QPushButton* cancel);
  QtPageFace& Front() const { return *m_pages[m_sheet.GetActiveIndex()]; }
  void FocusPage();
  void NameFront();
  QHBoxLayout* m_middle;
  QStackedWidget* m_stack;
  QPushButton *m_back, *m_next, *m_finish;
  UnseenPresses m_unseen;
};
