// A trace file on the disk, opened as a document does, with its notes.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/mapped_file.h"
#include "notes/file_notes.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

// The bytes of a file with one name and traces of these texts, numbered from 1.
inline std::string TrcOf(const std::vector<std::string>& texts) {
  TrcImage image;
  image.Name(1, "Net");
  for (const std::string& text : texts) image.Trace({.text = text, .component = 1});
  return image.Bytes();
}

// "a 0", "a 1", ...
inline std::vector<std::string> Texts(const std::string& word, std::size_t count) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < count; ++i) texts.push_back(word + " " + std::to_string(i));
  return texts;
}

class NotedFile {
 public:
  explicit NotedFile(const std::string& path) : m_path(path), m_file(MappedFile::Open(path)) {
    EXPECT_NE(m_file, nullptr);
    WalkTrc(m_file->View(), Sink{m_traces});
    m_read = notes.Load(path, Traces(), &why);
  }

  NotedTraces Traces() const { return {m_file->View(), m_traces}; }
  std::size_t size() const { return m_traces.size(); }
  const std::uint8_t* Record(std::size_t row) const { return m_traces[row]->Record(); }
  NotedFile& Mark(std::size_t row, std::uint8_t colour) {
    notes.Notes().Mark(row, Record(row), colour);
    return *this;
  }
  NotedFile& Note(std::size_t row, const std::string& note) {
    notes.Notes().SetNote(row, Record(row), note);
    return *this;
  }
  bool Save(bool replace = false) { return notes.Save(Traces(), replace, &why); }
  bool WasRead() const { return m_read; }

  // "2:3 7:1:text !9:2": the rows with their marks and notes, behind ! those that are stale and
  // behind > those beyond the end.
  std::string Said() const {
    std::string all;
    for (const FileNotes::Kept& one : notes.All()) {
      if (!all.empty()) all += ' ';
      if (one.place != NotePlace::Here) all += one.place == NotePlace::Stale ? '!' : '>';
      all += std::to_string(one.row.row) + ":" + std::to_string(one.row.colour);
      if (!one.row.note.empty()) all += ":" + one.row.note;
    }
    return all;
  }
  // What a filter text sees: the same without the others.
  std::string Applied() const {
    std::string all;
    for (std::size_t row = 0; row < size(); ++row) {
      const WhereMark mark = notes.Notes().Of(Record(row));
      if (mark.colour == 0 && mark.note.empty()) continue;
      if (!all.empty()) all += ' ';
      all += std::to_string(row) + ":" + std::to_string(mark.colour);
      if (!mark.note.empty()) all.append(":").append(mark.note);
    }
    return all;
  }

  FileNotes notes;
  std::string why;

 private:
  struct Sink {
    void OnName(NameId, std::string_view) {}
    void OnTrace(const std::uint8_t* record) { traces.EmplaceRecord(record); }
    void OnUnknownTag(std::uint64_t) {}
    bool OnProgress(std::uint64_t) { return true; }
    TraceList_t& traces;
  };

  const std::string m_path;
  const std::shared_ptr<const MappedFile> m_file;
  TraceList_t m_traces;
  bool m_read = false;
};
