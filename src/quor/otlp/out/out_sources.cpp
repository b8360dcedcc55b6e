#include "quor/otlp/out/out_sources.h"

#include <algorithm>
#include <charconv>

#include "records/raw_trace.h"

namespace {

constexpr char kNotKept[] = "the service could not keep them";

struct ReportedLosses {
  std::uint64_t sum = 0;
  bool any = false;
};

ReportedLosses LossesIn(std::span<const OutTrace> traces) {
  ReportedLosses found;
  for (const OutTrace& trace : traces) {
    std::uint64_t lost = 0;
    if (trace.serial != OutSources::kOutReport || !IsLossReport(trace, lost)) continue;
    found.any = true;
    if (__builtin_add_overflow(found.sum, lost, &found.sum)) found.sum = ~std::uint64_t{0};
  }
  return found;
}

}  // namespace

bool IsLossReport(const OutTrace& trace, std::uint64_t& lost) {
  lost = 0;
  if (trace.component != "Quor" || trace.category != "Loss") return false;
  const char* const end = trace.text.data() + trace.text.size();
  std::uint64_t number = 0;
  const auto [rest, error] = std::from_chars(trace.text.data(), end, number);
  if (error != std::errc()) return false;
  if (!std::string_view(rest, static_cast<std::size_t>(end - rest)).starts_with(" traces lost: "))
    return false;
  lost = number;
  return true;
}

OutSource& OutSources::SourceOf(std::string_view instance) {
  auto found = m_sources.find(instance);
  if (found == m_sources.end())
    found = m_sources
                .emplace(std::string(instance),
                         std::make_unique<OutSource>(std::string(instance), m_totals))
                .first;
  return *found->second;
}

void OutSources::Take(const OutFrame& frame, OutSink& sink) {
  if (frame.instance.empty()) return;
  OutSource& source = SourceOf(frame.instance);
  const ReportedLosses reported = LossesIn(frame.traces);
  // More may be reported than is counted here: the rest is counted with another frame.
  std::uint64_t toTell = frame.lost;
  std::uint64_t serial = frame.serial - frame.delivered - frame.lost;
  if (frame.lost > 0 && reported.sum < frame.lost) {
    const std::uint64_t silent = frame.lost - reported.sum;
    source.Interrupt(sink);
    ReportLoss(&source, silent, kNotKept, sink);
    toTell -= silent;
    serial += silent;
  }
  for (OutTrace& trace : frame.traces) {
    if (trace.serial != kOutReport) {
      trace.serial = ++serial;
      source.Take(trace, sink);
      continue;
    }
    std::uint64_t lost = 0;
    trace.serial = 0;
    if (IsLossReport(trace, lost) && lost > 0) source.Interrupt(sink);
    lost = std::min(lost, toTell);
    toTell -= lost;
    serial += lost;
    source.Report(trace, lost, sink);
  }
}

void OutSources::ReportLoss(OutSource* source, std::uint64_t lost, const std::string& reason,
                            OutSink& sink) {
  const std::string text = std::to_string(lost) + " traces lost: " + reason;
  OutTrace report;
  report.machine = source && !source->Machine().empty() ? source->Machine() : m_machine;
  report.app = source && !source->App().empty() ? std::string_view(source->App()) : "Quor";
  if (source) report.process = source->Process();
  report.component = "Quor";
  report.category = "Loss";
  report.attributes = kAttributeWarn;
  report.text = text;
  OutSource none({}, m_totals);
  (source ? *source : none).Report(report, lost, sink);
}

void OutSources::Forget(const std::string& instance, OutSink& sink) {
  const auto found = m_sources.find(instance);
  if (found == m_sources.end()) return;
  found->second->Interrupt(sink);
  m_sources.erase(found);
}

void OutSources::Lose(std::uint64_t lost, const std::string& reason, OutSink& sink) {
  for (const auto& [instance, source] : m_sources) source->Interrupt(sink);
  if (lost > 0) ReportLoss(nullptr, lost, reason, sink);
}

void OutSources::TellLost(std::uint64_t lost, const std::string& reason, OutSink& sink) {
  ReportLoss(nullptr, lost, reason, sink);
}

void OutSources::End(OutSink& sink) {
  for (const auto& [instance, source] : m_sources) source->Interrupt(sink);
  m_sources.clear();
}

void OutSources::Save(quor::otlp::out::State& to) const {
  to.clear_sources();
  for (const auto& [instance, source] : m_sources) source->Save(*to.add_sources());
}

bool OutSources::Load(const quor::otlp::out::State& from) {
  for (const quor::otlp::out::Source& saved : from.sources()) {
    if (!m_sources.contains(saved.instance()) && SourceOf(saved.instance()).Load(saved)) continue;
    m_sources.clear();
    return false;
  }
  return true;
}
