#include "config/traces/ui/traces_panel.h"

#include <QGridLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "controls/report/ui/report_list_widget.h"
#include "docview/ui/dialog_parts.h"
#include "docview/ui/wrapped_label.h"

namespace {

constexpr int kListChars = 128, kListRows = 22;

}  // namespace

TracesPanel::TracesPanel(CTracesList& traces, const QString& label, Forward forward,
                         QWidget* parent)
    : QWidget(parent),
      m_traces(traces),
      m_forward(std::move(forward)),
      m_list(new QtReportList(traces, "Traces", this)) {
  m_list->setObjectName("traces");
  SetWantedSize(kListChars, kListRows);
  auto* const text = new WrappedLabel(label, this);
  text->setBuddy(m_list);
  const auto preset = [this](unsigned settings) {
    return [this, settings] { m_traces.ApplySettings(settings); };
  };
  AddButton(kOff, "O&ff", preset(TRC_PRESET_OFF));
  AddButton(kSupport, "&Support", preset(TRC_PRESET_SUPPORT));
  AddButton(kDeveloper, "&Developer", preset(TRC_PRESET_DEVELOPER));
  AddButton(kMax, "&Max", preset(TRC_PRESET_MAX));
  AddButton(kCustom, "&Custom", [this] { m_traces.OnCustom(); });
  LayOut(text);
  m_traces.Attach(*this);
}

TracesPanel::~TracesPanel() {
  m_traces.Detach();
}

// Enter is the sheet's default button, whichever button has the focus.
void TracesPanel::AddButton(unsigned id, const char* text, const std::function<void()>& press) {
  QPushButton* const button = MakeButton(id, text, this);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this, press] { m_forward(press); });
  m_buttons.push_back(button);
}

void TracesPanel::LayOut(QWidget* text) {
  auto* const buttons = new QVBoxLayout;
  for (QPushButton* const button : m_buttons) buttons->addWidget(button);
  buttons->addStretch(1);
  auto* const grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->addWidget(text, 0, 0, 1, 2);
  grid->addWidget(m_list, 1, 0);
  grid->addLayout(buttons, 1, 1);
  grid->setColumnStretch(0, 1);
}

void TracesPanel::SetWantedSize(int chars, int rows) {
  m_list->SetWantedSize(
      {fontMetrics().averageCharWidth() * chars, fontMetrics().lineSpacing() * rows});
}

ReportList& TracesPanel::List() {
  return *m_list;
}

// A disabled button would hand the focus to a neighbour; the list keeps it for the next choice.
void TracesPanel::EnableButtons(bool on) {
  if (!on && focusWidget() && focusWidget() != m_list && isAncestorOf(focusWidget()))
    m_list->setFocus();
  for (QPushButton* const button : m_buttons) button->setEnabled(on);
}
