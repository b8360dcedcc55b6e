#include "config/view/ui/add_app_face.h"

#include <QLabel>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kListCharacters = 44, kListRows = 12;

}  // namespace

AddAppFace::AddAppFace(CAddAppDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_add(dialog),
      m_list(new QtListBox(*this, ListBoxMode::Several, tr("Application Name"), this)) {
  setWindowTitle(CAddAppDialog::kCaption);
  setObjectName("add application");
  m_list->setObjectName("applications");
  m_list->setMinimumSize(fontMetrics().averageCharWidth() * kListCharacters,
                         m_list->RowHeight() * kListRows);
  QLabel* const label = MakePlainLabel(CAddAppDialog::kLabel, this);
  label->setBuddy(m_list);
  const DialogButtons buttons = MakeDialogButtons(*this, true);
  m_ok = buttons.ok;
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(m_list, 1);
  if (!dialog.m_note.empty()) {
    QLabel* const note = MakePlainLabel(QString::fromStdString(dialog.m_note), this);
    note->setObjectName("note");
    note->setWordWrap(true);
    layout->addWidget(note);
  }
  layout->addWidget(buttons.box);
  m_list->setFocus();
}

void AddAppFace::UpdateData() {
  m_list->SetRedraw(false);
  m_list->ResetContent();
  std::uintptr_t number = 0;
  for (const std::string& item : m_add.Items()) m_list->AddString(item, number++);
  m_list->SetRedraw(true);
  m_ok->setEnabled(m_add.MayOK());
}

void AddAppFace::OnListBoxSelection() {
  std::set<std::size_t> selected;
  for (int item = 0; item < m_list->Count(); ++item)
    if (m_list->IsSelected(item)) selected.insert(m_list->Data(item));
  m_add.OnSelect(selected);
  m_ok->setEnabled(m_add.MayOK());
}
