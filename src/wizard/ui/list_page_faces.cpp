#include "wizard/ui/list_page_faces.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

#include "config/traces/ui/traces_panel.h"
#include "controls/listbox/ui/list_box_widget.h"
#include "docview/ui/dialog_parts.h"
#include "wizard/ui/page_parts.h"
#include "wizard/wizard_texts.h"

namespace {

constexpr int kTracesChars = 108, kTracesRows = 14;

// Enter is the wizard's default button, whichever button has the focus.
QPushButton* MakePageButton(unsigned id, const char* text, QWidget* page) {
  QPushButton* const button = MakeButton(id, text, page);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

WizMachinesFace::WizMachinesFace(CWizMachinesPage& page, QWidget* parent)
    : QtPageFace(parent),
      m_page(page),
      m_list(new QtListBox(page, ListBoxMode::One, tr("Machines"), this)),
      m_add(MakePageButton(CWizMachinesPage::kAdd, WizardTexts::kAdd, this)),
      m_delete(MakePageButton(CWizMachinesPage::kDelete, WizardTexts::kDelete, this)),
      m_identical(MakeCheckBox(CWizMachinesPage::kIdentical, WizardTexts::kIdentical, this)) {
  m_list->setObjectName("machines");
  connect(m_add, &QPushButton::clicked, this, [this] { Forward([this] { m_page.OnAdd(); }); });
  connect(m_delete, &QPushButton::clicked, this,
          [this] { Forward([this] { m_page.OnDelete(); }); });
  auto* const layout = new QVBoxLayout(this);
  AddList(*this, *layout, WizardTexts::kMachines, *m_list, {{m_add, m_delete}});
  layout->addWidget(m_identical);
  m_page.Attach(*m_list);
}

WizMachinesFace::~WizMachinesFace() {
  m_page.Detach();
}

// A disabled button would hand the focus to a neighbour.
void WizMachinesFace::ShowData() {
  if (m_delete->hasFocus() && !m_page.MayDelete()) m_list->setFocus();
  m_delete->setEnabled(m_page.MayDelete());
  m_identical->setChecked(m_page.m_bIdentical != 0);
}

bool WizMachinesFace::TakeData() {
  m_page.m_bIdentical = m_identical->isChecked();
  return true;
}

WizApplicationFace::WizApplicationFace(CWizApplicationPage& page, QWidget* parent)
    : QtPageFace(parent), m_page(page) {
  auto* const list = new QtListBox(page, ListBoxMode::Several, tr("Applications"), this);
  list->setObjectName("applications");
  QPushButton* const load = MakePageButton(CWizApplicationPage::kLoad, WizardTexts::kLoad, this);
  connect(load, &QPushButton::clicked, this, [this] { Forward([this] { m_page.OnLoad(); }); });
  auto* const layout = new QVBoxLayout(this);
  AddList(*this, *layout, WizardTexts::kApplications, *list, {{load}});
  m_page.Attach(*list);
}

WizApplicationFace::~WizApplicationFace() {
  m_page.Detach();
}

WizTracesFace::WizTracesFace(CWizTracesPage& page, QWidget* parent)
    : QtPageFace(parent), m_page(page), m_note(MakePlainLabel({}, this)) {
  auto* const panel = new TracesPanel(
      page.Traces(), WizardTexts::kTraces,
      [this](const std::function<void()>& call) { Forward(call); }, this);
  panel->SetWantedSize(kTracesChars, kTracesRows);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(panel);
  m_note->setObjectName("note");
  m_note->setWordWrap(true);
  layout->addWidget(m_note);
}

void WizTracesFace::ShowData() {
  m_note->setText(QString::fromStdString(m_page.Note()));
  m_note->setVisible(!m_note->text().isEmpty());
}
