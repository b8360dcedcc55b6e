// "Go to Time" and "Go to Row": one field, and below it why a text leads nowhere.
//
// Owner    Borrows the pane.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/dialogs/dialog.h"
#include "shell/goto/shown_traces.h"

class CGoToDlg : public CDialog {
 public:
  enum class Kind { Time, Row };

  CGoToDlg(TracePane& pane, Kind kind);

  const char* HelpTopic() const override { return "times"; }
  const char* Title() const;
  const char* Label() const;  // of the field, with its mnemonic
  // What may be written, and the zone of times.
  std::string Hint() const;
  // Why the text leads nowhere; empty: nothing is known against it.
  const std::string& Why() const { return m_why; }

  void SetText(const std::string& text);
  const std::string& Text() const { return m_text; }
  // Goes there and ends, or stays with a reason.
  void OnOK() override;

 private:
  bool Find(ShownTrace& found);
  bool FindMoment(ShownTrace& found);
  bool FindNumber(ShownTrace& found);

  TracePane& m_pane;
  const Kind m_kind;
  std::string m_text, m_why;
};

// May a pane go somewhere?
bool MayGoTo(const TracePane* pane);
// Runs the dialog for the pane.
void RunGoTo(TracePane& pane, CGoToDlg::Kind kind);
