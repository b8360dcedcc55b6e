#include "docview/sheet/ui/page_face.h"

#include "docview/ui/dialog_parts.h"
#include "docview/ui/qt_dialog_face.h"

void QtPageFace::SetFocus(unsigned control) {
  if (auto* const widget = findChild<QWidget*>(IdName(control))) widget->setFocus();
}

QWidget* QtPageFace::FirstControl() const {
  for (QWidget* each = nextInFocusChain(); each != this; each = each->nextInFocusChain()) {
    if (!isAncestorOf(each) || each->isHidden() || !each->isEnabledTo(this)) continue;
    if (each->focusPolicy() & Qt::TabFocus) return each;
  }
  return nullptr;
}

void QtPageFace::Forward(const std::function<void()>& call) {
  call();
  if (auto* const sheet = dynamic_cast<QtDialogFace*>(window())) sheet->CloseIfEnded();
}

QtPageFace* PageFaces::Make(CPropertyPage& page, QWidget* parent) const {
  return m_makers.at(typeid(page))(page, parent);
}
