// The traces of a file that is followed: their names, which of them are chosen, and their lines.
//
// Shape    Bytes come in pieces that end anywhere. Each operation gives how many of them were whole
//          records. Files that follow one another are one stream with one space of names. When
//          its ids run out, those of names that no file in force has any more are given back.
// Owner    Borrows options and output.
// Errors   Why: too many names at once. Damage is counted by file.
// Threads  One.
#pragma once

#include <functional>
#include <optional>

#include "commands/trace_lines.h"
#include "input/merged_names.h"
#include "records/trc_damage.h"

class FollowedTraces {
 public:
  using Test = std::function<bool(const TraceEvent_i&, Output&)>;

  FollowedTraces(const DumpOptions& options, Test test, Output& output);
  ~FollowedTraces() { ReleaseTrace(m_previous); }
  FollowedTraces(const FollowedTraces&) = delete;
  FollowedTraces& operator=(const FollowedTraces&) = delete;

  // Another file begins, or the same one again.
  void BeginFile();
  // Only the names. The last trace is "end" for the filter text until ForgetEnd.
  std::size_t LearnNames(Bytes piece);
  // Counts what --tail may leave out. LeaveTail: leaves out all but that.
  std::size_t Count(Bytes piece);
  void LeaveTail();
  // Prints. `named`: LearnNames has had the piece.
  std::size_t Give(Bytes piece, std::uint64_t position, bool named);
  void ForgetEnd() { m_choice.SetEnd(std::nullopt); }

  // Is no more wanted, or possible?
  bool IsOver() const { return m_over || m_choice.IsFull(); }
  const std::string& Why() const { return m_why; }
  TrcDamage& Damage() { return m_damage; }
  const LiveChoice& Choice() const { return m_choice; }
  Output& Out() { return m_output; }

 private:
  struct NameSink;
  struct CountSink;
  struct TraceSink;
  void KeepTested(LiveChoice& choice);
  void CountAnew();
  void GiveIdsBack();
  TraceEvent_i* Own(Bytes record);
  bool Add(Bytes record);

  const DumpOptions& m_options;
  const TraceOptions m_counted;  // the options without those that end the stream
  Output& m_output;
  const Test m_test;
  MergedNames m_names;
  NameMap m_ofFile;
  TrcDamage m_damage;
  LiveChoice m_choice;
  std::optional<LiveChoice> m_counter;
  const std::unique_ptr<TraceLines> m_lines;
  TraceEvent_i* m_previous = nullptr;
  bool m_over = false;
  std::string m_why;
};
