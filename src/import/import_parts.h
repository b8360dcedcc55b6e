// The trace files that an import writes: one, and further ones when it is full.
//
// A file holds less than 4 GiB and 65,536 names. The traces that do not fit go into "NAME-2.trc",
// then "NAME-3.trc". None of them has its name before all are complete.
//
// Owner    Holds the files from Begin to Finish; without Finish nothing is left of them.
// Errors   False and a reason. A further file is not written over an existing one.
// Threads  One.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/new_file.h"
#include "import/fields/imported_trace.h"
#include "records/trc_writer.h"

struct ImportLosses {
  std::uint64_t cutTexts = 0, cutNames = 0;
  std::uint64_t nulBytes = 0;  // each is replaced by U+2400
};

class ImportParts {
 public:
  explicit ImportParts(std::uint64_t fileBytesMax);
  ~ImportParts();

  bool Begin(const std::string& path, std::string* why);
  // The trace is written when the next one comes: its text may grow until then.
  bool Put(const ImportedTrace& trace, std::string* why);
  // Adds a line to the text of the last trace. False: there is none.
  bool AddLine(std::string_view line);
  bool Finish(std::string* why);

  std::uint64_t Traces() const { return m_traces; }
  std::vector<std::string> Paths() const;
  const ImportLosses& Losses() const { return m_losses; }

 private:
  struct Part;
  using Ids = TraceIdsOf<NameId>;

  bool NextPart(std::string* why);
  bool WriteLast(std::string* why);
  bool FindIds(const ImportedTrace& trace, Ids& ids);
  bool FindId(std::size_t place, std::string_view name, NameId& id);
  void MakeLast(const ImportedTrace& trace, const Ids& ids);
  std::string_view Clean(std::string_view text, std::string& storage);

  std::string m_path;
  std::uint64_t m_fileBytesMax;
  std::list<Part> m_parts;
  std::vector<std::uint8_t> m_record;  // the last trace; empty: none
  bool m_lastIsCut = false;
  std::uint64_t m_traces = 0;
  ImportLosses m_losses;
  std::string m_cleanText, m_cleanStack, m_cleanName;
};
