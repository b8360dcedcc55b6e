#include "config/pages/ui/config_sheet_face.h"

#include <QBoxLayout>
#include <QLabel>

#include "config/pages/ui/sink_page_face.h"
#include "config/pages/ui/traces_page_face.h"
#include "docview/ui/dialog_parts.h"

namespace {

PageFaces ConfigPages() {
  return PageFaces()
      .Add<CAppTraceCfgPropertyPage, TracesPageFace>()
      .Add<CAppSinkCfgPropertyPage, SinkPageFace>();
}

}  // namespace

ConfigSheetFace::ConfigSheetFace(CConfigPropertySheet& sheet, QWidget* parent)
    : TabbedSheetFace(sheet, parent, ConfigPages()), m_config(sheet) {
  setSizeGripEnabled(true);
  m_note = MakePlainLabel({}, this);
  m_note->setObjectName("note");
  m_note->setWordWrap(true);
  static_cast<QBoxLayout*>(layout())->insertWidget(1, m_note);
  UpdateData();
  resize(sizeHint());  // by itself a window takes two thirds of the screen at most
}

void ConfigSheetFace::UpdateData() {
  TabbedSheetFace::UpdateData();
  if (!m_note) return;
  m_note->setText(QString::fromStdString(m_config.Note()));
  m_note->setVisible(!m_note->text().isEmpty());
}
