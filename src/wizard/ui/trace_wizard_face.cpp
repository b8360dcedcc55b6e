#include "wizard/ui/trace_wizard_face.h"

#include "docview/ui/screen_fit.h"
#include "wizard/ui/list_page_faces.h"
#include "wizard/ui/plain_page_faces.h"
#include "wizard/ui/wizard_picture.h"

namespace {

PageFaces WizardPages() {
  return PageFaces()
      .Add<CWizWelcomePage, WizWelcomeFace>()
      .Add<CWizSelectPage, WizSelectFace>()
      .Add<CWizNetworkPage, WizNetworkFace>()
      .Add<CWizMachinesPage, WizMachinesFace>()
      .Add<CWizApplicationPage, WizApplicationFace>()
      .Add<CWizTracesPage, WizTracesFace>()
      .Add<CWizFinishPage, WizFinishFace>();
}

}  // namespace

TraceWizardFace::TraceWizardFace(CTraceWizardSheet& sheet, QWidget* parent)
    : WizardFace(sheet, parent, WizardPages()), m_picture(new WizardPicture(this)) {
  setSizeGripEnabled(true);
  AddPicture(*m_picture);
  resize(sizeHint());  // by itself a window takes two thirds of the screen at most
}

// The picture takes no room that the pages need.
void TraceWizardFace::setVisible(bool visible) {
  if (visible && !isVisible()) {
    const QSize room = ScreenRoom(*this).size();
    m_picture->setVisible(sizeHint().width() <= room.width());
    if (m_picture->isHidden()) resize(sizeHint());
  }
  WizardFace::setVisible(visible);
}
