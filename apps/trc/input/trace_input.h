// The trace files of a command line as one document.
//
// Shape    A file, "-" for standard input, or a pipe; each may be packed. Several are put together
//          in the order of time: each keeps its own order, and its time goes on where a trace of it
//          seems to go back. Of equal times the file that begins earlier comes first.
// Owner    Holds the documents, and the private files that they stand in.
// Errors   Messages on standard error. What a damaged file or archive has is given, and the exit
//          status tells.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "input/private_file.h"
#include "terminal/trace_file.h"

class TraceInput {
 public:
  explicit TraceInput(TerminalHost& host) : m_host(host) {}

  // False after a message, or after an interrupt.
  // `search`: of the traces of one file; null: none.
  bool Open(const std::vector<std::string>& paths, std::shared_ptr<LoadSearch> search = nullptr);
  // REQUIRES: it was opened.
  // The path of the file; null for standard input, and where several are put together.
  const std::string* OnlyPath() const;
  CTraceFileDoc& Document() const { return m_merged ? *m_merged : *m_sources.front().document; }

  // The same as of trace_file.h, for all files.
  bool IsUnchanged(const std::string& out = {}) const;
  int StatusWithDamage(int status) const;
  int StatusOfAnswer(int status) const;

 private:
  struct Source {
    std::string path;
    PrivateFile unpacked;
    bool isNamed = false, isPrivate = false;
    std::unique_ptr<CTraceFileDoc> document;
  };
  bool OpenOne(const std::string& path);
  bool Unpack(Source& source, int descriptor);
  bool Merge();

  TerminalHost& m_host;
  std::vector<Source> m_sources;
  PrivateFile m_together;
  std::unique_ptr<CTraceFileDoc> m_merged;
  std::shared_ptr<LoadSearch> m_search;
  bool m_cut = false;  // an archive
};

// The exit status of a command whose input was not opened.
int StatusWithoutInput();
