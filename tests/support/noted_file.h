// An open trace file whose notes a test writes: traces "one", "two" and "three". Then `slow` ones,
// for which "text matches \"(a|aa)+$\"" takes long.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "documents/trace_file_doc.h"
#include "notes/file_notes.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "where/where_program.h"

class NotedFile {
 public:
  explicit NotedFile(std::size_t slow = 0) {
    TrcImage image = TrcImage().Trace("one").Trace("two").Trace("three");
    for (; slow > 0; --slow) image.Trace(std::string(60, 'a') + "b");
    const std::string path = image.WriteTo(m_directory.File("web.trc"));
    EXPECT_TRUE(m_document.OnOpenDocument(path));
    m_document.SetPathName(path, false);
    EXPECT_TRUE(m_host.RunUntil([this] { return !m_document.m_loading; }));
    m_host.RunPosted();
  }
  void Mark(std::size_t row, std::uint8_t colour) {
    FileNotes notes;
    const NotedTraces traces{m_document.FileBytes(), m_document.m_traces};
    std::string why;
    ASSERT_TRUE(notes.Load(m_document.GetPathName(), traces, &why)) << why;
    notes.Notes().Mark(row, m_document.m_traces[row]->Record(), colour);
    ASSERT_TRUE(notes.Save(traces, false, &why)) << why;
  }
  void SpoilNotes() { m_directory.File("web.trc.notes", "{"); }
  template <class View>
  void Apply(View& view, const char* text) {
    WhereError error;
    const WhereProgramPtr where = WhereProgram::Compile(text, error);
    ASSERT_TRUE(where) << error.reason;
    ASSERT_TRUE(view.SetWhere(where));
    ASSERT_TRUE(m_host.RunUntil([&view] { return !view.FilterProgress(); }));
  }

  TempDir m_directory;
  RecordingHost m_host;  // has no main window that a load would tell
  CTraceFileDoc m_document{m_host};
};
