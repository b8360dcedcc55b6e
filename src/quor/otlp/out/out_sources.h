// The frames of a service as logs and spans: all sources of a sender.
//
// Shape    A frame is of one source and covers the traces (serial - delivered - lost, serial]. Each
//          trace gets its serial by the places of the reports of losses. What was lost without a
//          report is told by one in front of the frame. So for each source, and for all:
//
//            serials covered = logs + 2 * whole spans + unfinished spans + sum of quor.lost
//
//          once its open blocks are interrupted. Reports are not among the logs of this sum.
//          Names of threads and bounds of open blocks: see open_block.h.
// Owner    Borrows the texts of a frame for the call.
// Errors   A frame that contradicts itself is taken as well as it can be, and nothing is lost by
// it. Threads  One.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "quor/otlp/out/out_source.h"

struct OutFrame {
  std::string_view instance;
  std::uint64_t serial = 0, delivered = 0, lost = 0;
  // In order. Their serials are set here; 1 on reports of losses means nothing: see `isReport`.
  std::span<OutTrace> traces;
};

// Is it a report "N traces lost: reason" of the service? `lost`: the N, 0 for another text.
bool IsLossReport(const OutTrace& trace, std::uint64_t& lost);

class OutSources {
 public:
  // `machine`: whose traces they are where nothing else says so.
  explicit OutSources(std::string machine) : m_machine(std::move(machine)) {}
  OutSources(const OutSources&) = delete;
  OutSources& operator=(const OutSources&) = delete;

  // Reports have the serial kOutReport.
  static constexpr std::uint64_t kOutReport = ~std::uint64_t{0};
  void Take(const OutFrame& frame, OutSink& sink);
  // Nothing more comes of this source.
  void Forget(const std::string& instance, OutSink& sink);
  // So many traces are lost, nobody knows of which sources.
  void Lose(std::uint64_t lost, const std::string& reason, OutSink& sink);
  // The same of traces that were taken: no block lacks its end by it.
  void TellLost(std::uint64_t lost, const std::string& reason, OutSink& sink);
  // Nothing more comes of any source.
  void End(OutSink& sink);

  const OpenTotals& Open() const { return m_totals; }
  // Replaces the sources of `to`.
  void Save(quor::otlp::out::State& to) const;
  // REQUIRES: nothing was taken. False: it cannot be a state that was saved, and nothing is open.
  bool Load(const quor::otlp::out::State& from);

 private:
  OutSource& SourceOf(std::string_view instance);
  void ReportLoss(OutSource* source, std::uint64_t lost, const std::string& reason, OutSink& sink);

  const std::string m_machine;
  OpenTotals m_totals;
  std::map<std::string, std::unique_ptr<OutSource>, std::less<>> m_sources;
};
