#include "docview/sheet/ui/sheet_face.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>
#include <utility>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kFrameChars = 12;  // the width of the buttons in the window's frame

}  // namespace

QtSheetFace::QtSheetFace(CPropertySheet& sheet, QWidget* parent, const PageFaces& faces)
    : QtDialogFace(sheet, parent), m_sheet(sheet) {
  for (CPropertyPage* const page : sheet.Pages()) {
    QtPageFace* const face = faces.Make(*page, this);
    face->setObjectName(IdName(page->Id()));
    m_pages.push_back(face);
  }
}

QtSheetFace::~QtSheetFace() {
  m_sheet.Close();
}

// A window manager cuts a title at its end, where the wizard's has the name of the machine.
void QtSheetFace::UpdateData() {
  const QString title = QString::fromStdString(m_sheet.Title());
  const int room = width() - kFrameChars * fontMetrics().averageCharWidth();
  const QString shown = fontMetrics().elidedText(title, Qt::ElideMiddle, room);
  SetPlainTitle(*this, shown);
  setAccessibleName(shown == title ? QString() : title);
}

void QtSheetFace::resizeEvent(QResizeEvent* event) {
  QtDialogFace::resizeEvent(event);
  QtSheetFace::UpdateData();
}

TabbedSheetFace::TabbedSheetFace(CPropertySheet& sheet, QWidget* parent, const PageFaces& faces)
    : QtSheetFace(sheet, parent, faces), m_tabs(new QTabWidget(this)) {
  setObjectName("sheet");
  for (std::size_t place = 0; place < m_pages.size(); ++place)
    m_tabs->addTab(m_pages[place], QString::fromStdString(sheet.Pages()[place]->Caption()));
  connect(m_tabs, &QTabWidget::currentChanged, this, [this](int place) { OnTab(place); });
  QDialogButtonBox* const buttons = MakeDialogButtons(*this, *sheet.HelpTopic() != '\0').box;
  m_apply = AddButton(*buttons, kApply, "&Apply", QDialogButtonBox::ApplyRole);
  connect(m_apply, &QPushButton::clicked, this, [this] { Forward([this] { m_sheet.OnApply(); }); });
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(m_tabs);
  layout->addWidget(buttons);
  sheet.Open(*this);
}

// The tab bar has changed its current tab already. It goes back until the page in front has agreed,
// because that page may show a message box.
void TabbedSheetFace::OnTab(int place) {
  UpdateData();
  Forward([&] { m_sheet.SetActivePage(static_cast<std::size_t>(place)); });
}

void TabbedSheetFace::ShowPage(std::size_t place) {
  UpdateData();
  if (std::exchange(m_shown, true)) return;
  if (QWidget* const first = m_pages[place]->FirstControl()) first->setFocus();
}

void TabbedSheetFace::UpdateData() {
  QtSheetFace::UpdateData();
  const QSignalBlocker silent(m_tabs);
  m_tabs->setCurrentIndex(static_cast<int>(m_sheet.GetActiveIndex()));
  m_apply->setEnabled(m_sheet.CanApply());
}
