#include "config/view/ui/config_pane_widget.h"

#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr int kNoteMarginPx = 4, kNoteLines = 5;

}  // namespace

QtConfigPane::QtConfigPane(ListBoxOwner& owner)
    : m_list(new QtListBox(owner, ListBoxMode::One, tr("Applications"), this)),
      m_note(MakePlainLabel({}, this)) {
  m_list->setObjectName("applications");
  m_list->setFrameShape(QFrame::NoFrame);  // the window has a border
  m_note->setObjectName("connection");
  m_note->setWordWrap(true);
  m_note->setContentsMargins(kNoteMarginPx, kNoteMarginPx, kNoteMarginPx, kNoteMarginPx);
  // A long note neither widens the window nor hides the list.
  QSizePolicy policy = m_note->sizePolicy();
  policy.setHorizontalPolicy(QSizePolicy::Ignored);
  m_note->setSizePolicy(policy);
  m_note->setMaximumHeight(m_note->fontMetrics().lineSpacing() * kNoteLines + 2 * kNoteMarginPx);
  m_note->hide();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(m_list, 1);
  layout->addWidget(m_note);
  setFocusProxy(m_list);
}

void QtConfigPane::SetNote(const std::string& text) {
  const QString shown = QString::fromStdString(text);
  if (shown == m_note->text()) return;
  m_note->setText(shown);
  m_note->setAccessibleName(shown);
  SetPlainToolTip(*m_note, shown);
  m_note->setVisible(!shown.isEmpty());
}
