// The window of a wizard.
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyleHints>
#include <QVBoxLayout>
#include <QWindow>
#include <chrono>
#include <utility>

#include "docview/sheet/ui/sheet_face.h"
#include "docview/ui/dialog_parts.h"

namespace {

std::int64_t NowMs() {
  using std::chrono::milliseconds, std::chrono::steady_clock;
  return std::chrono::duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

bool PressesButtons(const QKeyEvent& key) {
  return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter || key.key() == Qt::Key_Space ||
         key.modifiers() & Qt::AltModifier;
}

DoubleClickLimits LimitsOfDoubleClicks() {
  const QStyleHints& hints = *QGuiApplication::styleHints();
  return {hints.mouseDoubleClickInterval(), hints.mouseDoubleClickDistance()};
}

}  // namespace

WizardFace::WizardFace(CPropertySheet& sheet, QWidget* parent, const PageFaces& faces)
    : QtSheetFace(sheet, parent, faces),
      m_middle(new QHBoxLayout),
      m_stack(new QStackedWidget(this)),
      m_back(MakeStep(kBack, "< &Back", [this] { m_sheet.OnBack(); })),
      m_next(MakeStep(kNext, "&Next >", [this] { m_sheet.OnNext(); })),
      m_finish(MakeStep(kFinish, "&Finish", [this] { m_sheet.OnFinish(); })) {
  setObjectName("wizard");
  for (QtPageFace* const page : m_pages) m_stack->addWidget(page);
  QPushButton* const cancel = MakeButton(CDialog::kIdCancel, "Cancel", this);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  LayOut(cancel);
  sheet.Open(*this);
}

void WizardFace::LayOut(QPushButton* cancel) {
  auto* const row = new QHBoxLayout;
  row->addStretch(1);
  for (QPushButton* const button : {m_back, m_next, m_finish, cancel}) row->addWidget(button);
  m_middle->addWidget(m_stack, 1);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(m_middle, 1);
  layout->addLayout(row);
}

void WizardFace::AddPicture(QWidget& picture) {
  m_middle->insertWidget(0, &picture);
}

QPushButton* WizardFace::MakeStep(unsigned id, const char* text, std::function<void()> step) {
  QPushButton* const button = MakeButton(id, text, this);
  connect(button, &QPushButton::clicked, this,
          [this, step = std::move(step)] { Forward([&] { Do(step); }); });
  return button;
}

void WizardFace::Do(const std::function<void()>& step) {
  m_unseen.StepBegins(NowMs());
  step();
  m_unseen.StepEnds(NowMs());
}

// The events of the window system reach the widgets through the window's handle.
void WizardFace::showEvent(QShowEvent* event) {
  QtSheetFace::showEvent(event);
  windowHandle()->installEventFilter(this);
}

bool WizardFace::eventFilter(QObject* watched, QEvent* event) {
  if (watched == windowHandle() && event->isInputEvent()) {
    m_unseen.Arrives(static_cast<const QInputEvent*>(event)->timestamp(), NowMs());
    if (IsBlindPress(*event)) return true;
  }
  return QtSheetFace::eventFilter(watched, event);
}

// Cancel stands in its place on every page, and Esc is Cancel.
bool WizardFace::IsBlindPress(const QEvent& event) {
  if (event.type() == QEvent::KeyPress) {
    const auto& key = static_cast<const QKeyEvent&>(event);
    return PressesButtons(key) && (key.isAutoRepeat() || m_unseen.IsUnseen(key.timestamp()));
  }
  if (event.type() != QEvent::MouseButtonPress && event.type() != QEvent::MouseButtonDblClick)
    return false;
  const auto& mouse = static_cast<const QMouseEvent&>(event);
  const QWidget* const under = childAt(mouse.position().toPoint());
  if (!under || (under != m_back && under != m_next && under != m_finish)) {
    m_unseen.PressesElsewhere();
    return false;
  }
  const QPoint place = mouse.globalPosition().toPoint();
  const MousePress press{mouse.timestamp(), place.x(), place.y()};
  if (m_unseen.IsUnseen(press.stamp) || m_unseen.IsSecond(press, LimitsOfDoubleClicks()))
    return true;
  m_unseen.Presses(press);
  return false;
}

void WizardFace::ShowPage(std::size_t place) {
  m_stack->setCurrentIndex(static_cast<int>(place));
  UpdateData();
  FocusPage();
}

void WizardFace::FocusPage() {
  QWidget* const first = Front().FirstControl();
  QPushButton* const ahead = m_finish->isDefault() ? m_finish : m_next;
  (first ? first : static_cast<QWidget*>(ahead))->setFocus();
}

// A screen reader tells the page's name when the focus enters the page, which is before a posted
// title takes effect. Where the page has no control the button that gets the focus has the page's
// words.
void WizardFace::NameFront() {
  QtPageFace& front = Front();
  const QString name = QString::fromStdString(m_sheet.ComingTitle());
  if (front.accessibleName() != name) front.setAccessibleName(name);  // tells the change
  const QString words = front.FirstControl() ? QString() : front.Words();
  for (QPushButton* const button : {m_next, m_finish}) button->setAccessibleDescription(words);
}

// A button that is disabled or hidden would hand the focus to a neighbour, which may be Cancel.
void WizardFace::UpdateData() {
  QtSheetFace::UpdateData();
  const QWidget* const focus = focusWidget();
  const unsigned buttons = m_sheet.WizardButtons();
  const bool finish = buttons & PSWIZB_FINISH;
  m_back->setEnabled(buttons & PSWIZB_BACK);
  m_next->setEnabled(buttons & PSWIZB_NEXT);
  m_next->setVisible(!finish);
  m_finish->setVisible(finish);
  (finish ? m_finish : m_next)->setDefault(true);
  NameFront();
  for (const QPushButton* const button : {m_back, m_next, m_finish})
    if (button == focus && (!button->isEnabled() || button->isHidden())) FocusPage();
}
