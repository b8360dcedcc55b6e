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

  // `shown`: the columns that the boxes begin with.
  explicit COptionsDlg(Host& host, const ColumnFlags& shown = g_activeColumns);

  struct Box {
    unsigned id;
    const char* text;
    int column;  // its flag in g_activeColumns
    bool enabled;
    int COptionsDlg::*member;
  };
  // In their order on the screen.
  static const std::vector<Box>& Boxes();
  static const char* Title();       // "Options"
  static std::string LimitRange();  // "2,500 to 1,000,000"
  const char* HelpTopic() const override { return "columns"; }

  // A click flips the member, except that of 1078; the exchange at OK replaces them in any case.
  // 1167 is the box for UTC, 1168 the box for the tints, 1169 the box for views that come back.
  void OnBoxClicked(unsigned id);
  // The data exchange: reads the controls, then checks the range of the limit. A disabled box
  // changes nothing. False leaves the dialog open, after a message.
  bool Exchange(const std::vector<std::pair<unsigned, bool>>& boxes, bool utc,
                const std::string& limitText, bool tint = true, bool remember = true);

  // Members in the order of the exchange.
  int m_severity, m_count, m_time, m_machine, m_application, m_component, m_category, m_attributes,
      m_pid, m_tid, m_stack, m_ticCount;
  std::uint32_t m_limit;
  int m_ticDifference;
  int m_utc;
  int m_tint;      // rows of warnings and errors
  int m_remember;  // what windows show of a file
};

// Applies the dialog after OK: sets the globals and stores the values. The caller then notifies the
// views.
void ApplyOptions(const COptionsDlg& dialog);
