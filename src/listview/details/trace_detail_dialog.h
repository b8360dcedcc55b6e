// "Trace Properties": every field of one trace, its whole text, its stack line by line, and buttons
// for the next and the previous trace.
//
// The cursor is at the trace to show; when the dialog ends it is at the last shown trace. The
// dialog changes nothing and does not follow the document. A monitor may add and trim traces
// meanwhile, so the dialog reads the trace at the cursor only while it fills its fields.
//
// Owner    Borrows the cursor and the names.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "docview/dialogs/dialog.h"
#include "listview/details/stack_namer.h"
#include "listview/details/trace_iterator.h"
#include "tree/find/find_hits.h"

class CTraceDetailDialog : public CDialog {
 public:
  static constexpr const char* kCaption = "Trace Properties";
  const char* HelpTopic() const override { return "properties"; }

  CTraceDetailDialog(Host& host, CTraceIterator& iterator, const NameMap& names);
  ~CTraceDetailDialog() override;

  void OnInitDialog() override;
  // REQUIRES: there is a trace in that direction. Kept: this is not checked again.
  void OnNext();
  void OnBack();
  // Ends the dialog so that its caller opens the source of a line of the stack; false: it is not
  // known, and nothing happens.
  bool OnGotoFrame(std::size_t line);
  bool HasSource(std::size_t line) const;
  // Set by the end with OnGotoFrame; the path is empty otherwise.
  std::string m_gotoPath;
  unsigned m_gotoLine = 0;

  // The content of the fields, UTF-8; all empty when the cursor has no trace.
  std::string m_application, m_count, m_machine, m_pid, m_tid, m_time;
  std::string m_text;            // lines end in CR LF
  std::vector<HitRange> m_hits;  // of the last search, in m_text
  std::string m_component, m_category, m_ticCount, m_ticDifference, m_source, m_attributes,
      m_severity;
  std::string m_account;             // empty: the process names none; the field is not shown then
  std::vector<std::string> m_stack;  // the first line is selected
  bool m_stackEnabled = false;
  // The stack with the names of its functions, shown in place of the recorded lines when it comes.
  // Empty until then, and if there is nobody to find them.
  StackNames m_stackNames;
  std::function<void()> m_whenNamed;          // of the face
  bool m_hasNext = false, m_hasBack = false;  // as of the last filling

  // The fields with their captions, group by group, except "Stack:".
  struct Field {
    unsigned id;
    const char* group;
    const char* caption;
    std::string CTraceDetailDialog::*value;
  };
  static const std::vector<Field>& Fields();
  static const Field& AccountField();  // the last one of its group, for a trace that has one
  static constexpr unsigned kSource = 1087, kStack = 1151, kText = 1039, kBack = 1057, kNext = 1058,
                            kAccount = 1160;

 private:
  void Fill();
  void FillFields(const TraceEvent_i& event);
  void FillText(const std::string& text);
  void FillStack(const std::string& stack);
  std::string TicDifference(std::uint64_t ticCount);

  CTraceIterator& m_iterator;
  const NameMap& m_nameMap;
  FindHits m_findHits;
  StackNamer m_namer;
};
