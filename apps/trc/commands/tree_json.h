// The nodes of a procedure tree for other programs, one JSON object a line, from the top downward.
//
// Shape    {"id":7,"parent":3,"depth":4,"kind":"block","name":"commit","durationNs":1250.5}. The
//          kinds are machine, application, process, thread, block and trace. The parent of a
//          machine is null. Processes, threads and blocks have durations, in nanoseconds; a trace
//          has "i", its index in the file, and its time. Lines and no nested arrays, because blocks
//          may nest deeper than readers of JSON go.
// Threads  One at a time.
#pragma once

#include <string>
#include <unordered_map>

#include "commands/tree.h"
#include "filter/shown_traces.h"
#include "records/moments/trace_moments.h"
#include "terminal/output.h"

class TreeJson {
 public:
  // Borrows all; the moments have learned the file.
  TreeJson(const ProcModel& model, const NameMap& names, TraceMoments& moments, Output& output)
      : m_model(model), m_names(names), m_moments(moments), m_output(output) {}

  // A trace that is in the tree, and its index in the file.
  void Note(const TraceEvent_i& trace, std::uint64_t place) { m_places[&trace] = place; }
  // A machine and the levels below it. False when the output takes no more.
  bool Write(const CTraceEvent& machine, int levels);

 private:
  void Append(const CTraceEvent& node, std::uint64_t parent, int depth);
  std::string NameOfNode(const CTraceEvent& node) const;

  const ProcModel& m_model;
  const NameMap& m_names;
  TraceMoments& m_moments;
  Output& m_output;
  std::unordered_map<const TraceEvent_i*, std::uint64_t> m_places;
  std::uint64_t m_nodes = 0;
};
