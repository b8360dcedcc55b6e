// "Note": the text at one trace.
//
// Shape    Any length, several lines. An empty text takes the note away.
// Owner    Borrows the notes of the document. The trace may go while the dialog is open: then OK
//          says so and the dialog stays, so that the text is not lost.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/dialogs/dialog.h"
#include "notes/kept/doc_notes.h"

class CNoteDialog : public CDialog {
 public:
  static constexpr const char* kCaption = "Note";
  static constexpr unsigned kTrace = 1230, kText = 1231;
  const char* HelpTopic() const override { return "marks"; }

  // `trace` is its text, for the user to recognise it.
  CNoteDialog(Host& host, DocNotes& notes, std::uint64_t number, std::string trace);

  const std::string& Trace() const { return m_trace; }
  std::string m_text;  // UTF-8
  void OnOK() override;

 private:
  DocNotes& m_notes;
  const std::uint64_t m_number, m_generation;
  const std::string m_trace;
};
