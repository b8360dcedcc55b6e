// The traces of a file whose texts a pattern may match, found by all processors ahead of a search.
//
// Shape    The traces in the order of the search: from one on, to the last or the first one. Where
//          the plan knows bytes that each match has, the threads look for these in the mapped file
//          itself, over many records at once, and only then for the record. No match is left out.
//          A text that takes long is given as one that may match.
// Owner    The threads share the lent traces and the plan. The end of the scan stops them and does
//          not wait for them.
// Errors   A lack of memory ends it: Failed.
// Threads  One, apart from its own.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "documents/lent_traces.h"
#include "tree/find/scan/scan_pieces.h"
#include "tree/regex/program/regex_program.h"

class TextScan {
 public:
  // Null where it would not help: few traces, or no thread. REQUIRES: start is one of the traces.
  static std::unique_ptr<TextScan> Begin(std::shared_ptr<const LentTraces> traces,
                                         const RegexProgram& program, const ScanOrder& order);
  // The same with this many threads, whatever the number of traces is.
  static std::unique_ptr<TextScan> BeginWith(std::size_t threads, std::size_t tracesPerPiece,
                                             std::shared_ptr<const LentTraces> traces,
                                             const RegexProgram& program, const ScanOrder& order);
  ~TextScan();
  TextScan(const TextScan&) = delete;
  TextScan& operator=(const TextScan&) = delete;

  enum class State { Found, NotYet, Over, Failed };
  // Moves on to the next trace that may match. NotYet: it is not known after this time.
  State Next(std::chrono::milliseconds wait);
  // After Found: its position in the file.
  std::size_t Place() const;
  // It matches without any doubt.
  bool IsSure() const;

 private:
  class Work;
  struct Taken;
  TextScan();
  std::shared_ptr<Work> m_work;
  std::unique_ptr<Taken> m_taken;
};
