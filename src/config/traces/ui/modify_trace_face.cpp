#include "config/traces/ui/modify_trace_face.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/prompt_button.h"

namespace {

QRadioButton* MakeRadio(unsigned id, const char* text, QWidget* parent) {
  auto* const radio = new PromptButton<QRadioButton>(text, parent);
  NameControl(*radio, id, text);
  return radio;
}

// A group without a choice: no button of an exclusive group can be unchecked.
void Check(const std::array<QRadioButton*, 3>& radios, int choice) {
  QButtonGroup* const group = radios.front()->group();
  group->setExclusive(false);
  for (int place = 0; place < 3; ++place)
    radios[static_cast<std::size_t>(place)]->setChecked(place == choice);
  group->setExclusive(true);
}

}  // namespace

ModifyTraceFace::ModifyTraceFace(CModifyTraceDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_dialog(dialog) {
  setWindowTitle(CModifyTraceDialog::kCaption);
  setObjectName("modify trace");
  auto* const layout = new QVBoxLayout(this);
  layout->setSpacing(10);
  layout->addWidget(MakeModes());
  layout->addWidget(MakeSeverities());
  AddBox("Include &Developer Traces", &CModifyTraceDialog::m_bDeveloper);
  AddBox("Include &Verbose Traces", &CModifyTraceDialog::m_bVerbose);
  AddBox("Include Source Locatio&n", &CModifyTraceDialog::m_bLocation);
  AddBox("Include Callstac&k", &CModifyTraceDialog::m_bStack);
  for (const auto& [box, member] : m_boxes) layout->addWidget(box);
  layout->addSpacing(8);
  layout->addWidget(MakeDialogButtons(*this, true).box);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

QWidget* ModifyTraceFace::MakeModes() {
  auto* const row = new QWidget(this);
  auto* const layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* const group = new QButtonGroup(row);
  constexpr const char* kTexts[] = {"O&ff", "&Custom", "&Maximum"};
  for (int mode = 0; mode < 3; ++mode) {
    QRadioButton* const radio = MakeRadio(kModes + static_cast<unsigned>(mode), kTexts[mode], row);
    connect(radio, &QRadioButton::clicked, this, [this, mode] {
      m_dialog.OnMode(mode);
      UpdateData();
    });
    group->addButton(radio);
    layout->addWidget(radio);
    m_modes[static_cast<std::size_t>(mode)] = radio;
  }
  layout->addStretch(1);
  return row;
}

QGroupBox* ModifyTraceFace::MakeSeverities() {
  auto* const box = new QGroupBox("Severity", this);
  auto* const layout = new QVBoxLayout(box);
  auto* const group = new QButtonGroup(box);
  constexpr const char* kTexts[] = {"&Errors only", "&Warnings && Errors",
                                    "&Info, Warnings, && Errors"};
  for (int choice = 0; choice < 3; ++choice) {
    QRadioButton* const radio =
        MakeRadio(kSeverities + static_cast<unsigned>(choice), kTexts[choice], box);
    connect(radio, &QRadioButton::clicked, this, [this, choice] { m_dialog.m_nSeverity = choice; });
    group->addButton(radio);
    layout->addWidget(radio);
    m_severities[static_cast<std::size_t>(choice)] = radio;
  }
  return box;
}

void ModifyTraceFace::AddBox(const char* text, Member member) {
  QCheckBox* const box = MakeCheckBox(kBoxes + static_cast<unsigned>(m_boxes.size()), text, this);
  connect(box, &QCheckBox::clicked, this, [this, member](bool on) { m_dialog.*member = on; });
  m_boxes.emplace_back(box, member);
}

void ModifyTraceFace::UpdateData() {
  Check(m_modes, m_dialog.m_nMode);
  Check(m_severities, m_dialog.m_nSeverity);
  const bool custom = m_dialog.CustomEnabled();
  for (QRadioButton* const radio : m_severities) radio->setEnabled(custom);
  for (const auto& [box, member] : m_boxes) {
    box->setChecked(m_dialog.*member != 0);
    box->setEnabled(custom);
  }
}
