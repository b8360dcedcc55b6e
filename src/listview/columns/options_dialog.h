// "Options": which columns show, UTC, tints, and the size of a monitor's history.
//
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "docview/dialogs/dialog.h"
#include "settings/globals.h"

class COptionsDlg : public CDialog {
 public:
  static constexpr unsigned kLimitMin = 2500, kLimitMax = 1000000;

  explicit COptionsDlg(Host& host);

  struct Box {
    unsigned id;
    const char* text;
    int column;  // its flag in g_activeColumns
    bool enabled;
    int COptionsDlg::*member;
  };
  // In the order in which they stand on the screen.
  static const std::vector<Box>& Boxes();
  static const char* Title();       // "Options"
  static std::string LimitRange();  // "2,500 to 1,000,000"

  // A click flips the member, except that of 1078; the exchange at OK replaces them in any case.
  // 1167 is the box of UTC, 1168 that of the tints.
  void OnBoxClicked(unsigned id);
  // The data exchange: what the controls hold, then the range of the limit. A disabled box changes
  // nothing. False leaves the dialog open, and a message has been shown.
  bool Exchange(const std::vector<std::pair<unsigned, bool>>& boxes, bool utc,
                const std::string& limitText, bool tint = true);

  // Members in the order of the exchange.
  int m_severity, m_count, m_time, m_machine, m_application, m_component, m_category, m_attributes,
      m_pid, m_tid, m_stack, m_ticCount;
  std::uint32_t m_limit;
  int m_ticDifference;
  int m_utc;
  int m_tint;  // rows of warnings and errors
};

// What the application does after OK: sets the globals and stores the values. The caller then tells
// the views.
void ApplyOptions(const COptionsDlg& dialog);
