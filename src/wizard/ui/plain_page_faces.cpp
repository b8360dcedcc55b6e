#include "wizard/ui/plain_page_faces.h"

#include <QCheckBox>
#include <QRadioButton>

#include "docview/ui/dialog_parts.h"
#include "wizard/ui/page_parts.h"
#include "wizard/wizard_texts.h"

WizWelcomeFace::WizWelcomeFace(CWizWelcomePage& page, QWidget* parent)
    : QtPageFace(parent),
      m_page(page),
      m_autoStart(MakeCheckBox(CWizWelcomePage::kAutoStart, WizardTexts::kAutoStart, this)) {
  auto* const layout = new QVBoxLayout(this);
  AddParagraphs(*this, *layout, WizardTexts::kWelcome);
  layout->addStretch(1);
  layout->addWidget(m_autoStart);
  connect(m_autoStart, &QCheckBox::clicked, this,
          [this] { Forward([this] { m_page.OnAutoStart(); }); });
}

void WizWelcomeFace::ShowData() {
  m_autoStart->setChecked(m_page.m_bAutoStart != 0);
}

bool WizWelcomeFace::TakeData() {
  m_page.m_bAutoStart = m_autoStart->isChecked();
  return true;
}

void WizChoiceFace::ShowData() {
  for (std::size_t place = 0; place < m_choices.size(); ++place)
    m_choices[place]->setChecked(static_cast<int>(place) == m_chosen);
}

bool WizChoiceFace::TakeData() {
  m_chosen = ChosenOf(m_choices);
  return true;
}

WizSelectFace::WizSelectFace(CWizSelectPage& page, QWidget* parent)
    : WizChoiceFace(page.m_nTask, parent) {
  auto* const layout = new QVBoxLayout(this);
  AddParagraphs(*this, *layout, {{WizardTexts::kMode}});
  m_choices = AddChoices(*this, *layout, CWizSelectPage::kTask, WizardTexts::kTasks);
  layout->addStretch(1);
}

WizNetworkFace::WizNetworkFace(CWizNetworkPage& page, QWidget* parent)
    : WizChoiceFace(page.m_nNetworkMode, parent) {
  auto* const layout = new QVBoxLayout(this);
  AddParagraphs(*this, *layout, WizardTexts::kNetwork);
  m_choices = AddChoices(*this, *layout, CWizNetworkPage::kMode, WizardTexts::kNetworkModes);
  layout->addStretch(1);
}

WizFinishFace::WizFinishFace(CWizFinishPage&, QWidget* parent) : QtPageFace(parent) {
  auto* const layout = new QVBoxLayout(this);
  AddParagraphs(*this, *layout, WizardTexts::kFinish);
  layout->addStretch(1);
}
