#include "config/traces/modify_trace_dialog.h"

#include "config/traces/trace_item.h"
#include "quor/client/trace_config.h"

namespace {

// The severities are nested: each choice includes the ones before it.
constexpr unsigned kSeverities[] = {TRC_SET_ERROR, TRC_SET_WARN | TRC_SET_ERROR,
                                    TRC_SET_INFO | TRC_SET_WARN | TRC_SET_ERROR};
constexpr unsigned kAllSeverities = kSeverities[2];

int SeverityOf(unsigned settings) {
  for (int choice = 0; choice < 3; ++choice)
    if ((settings & kAllSeverities) == kSeverities[choice]) return choice;
  return -1;
}

int ModeOf(unsigned settings) {
  if (settings == TRC_PRESET_OFF) return CModifyTraceDialog::kOff;
  return settings == TRC_PRESET_MAX ? CModifyTraceDialog::kMaximum : CModifyTraceDialog::kCustom;
}

}  // namespace

CModifyTraceDialog::CModifyTraceDialog(Host& host, unsigned settings)
    : CDialog(host), m_nMode(ModeOf(settings)) {
  SetFromSettings(settings);
}

void CModifyTraceDialog::SetFromSettings(unsigned settings) {
  m_nSeverity = SeverityOf(settings);
  m_bDeveloper = (settings & TRC_SET_DEVELOPER) != 0;
  m_bVerbose = (settings & TRC_SET_VERBOSE) != 0;
  m_bLocation = (settings & TRC_SET_LOCATION) != 0;
  m_bStack = (settings & TRC_SET_STACK) != 0;
}

void CModifyTraceDialog::OnMode(int mode) {
  m_nMode = mode;
  UpdateControls();
}

// Kept: settings whose severities are not one of the three choices come up as all three severities
// without the rest. The user sees that before OK.
void CModifyTraceDialog::UpdateControls() {
  if (m_nMode == kOff) SetFromSettings(TRC_PRESET_OFF);
  if (m_nMode == kMaximum) SetFromSettings(TRC_PRESET_MAX);
  if (m_nMode == kCustom && m_nSeverity == -1) SetFromSettings(TRC_PRESET_SUPPORT);
}

unsigned CModifyTraceDialog::GetDialogSettings() const {
  if (m_nMode == kOff) return TRC_PRESET_OFF;
  unsigned settings = m_nSeverity < 0 ? 0 : kSeverities[m_nSeverity];
  if (m_bDeveloper) settings |= TRC_SET_DEVELOPER;
  if (m_bVerbose) settings |= TRC_SET_VERBOSE;
  if (m_bLocation) settings |= TRC_SET_LOCATION;
  if (m_bStack) settings |= TRC_SET_STACK;
  return settings;
}
