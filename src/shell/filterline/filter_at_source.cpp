#include "shell/filterline/filter_at_source.h"

#include <utility>

#include "documents/trace_realtime_doc.h"
#include "settings/globals.h"
#include "shell/filterline/filter_line.h"
#include "where/source/where_at_source.h"

namespace {

std::string AllCome(const std::string& why) {
  return "All traces come: " + why + ".";
}

}  // namespace

void FilterAtSource::SetDocument(CTraceDoc& document) {
  m_monitor = dynamic_cast<CTraceRealtimeDoc*>(&document);
}

std::string FilterAtSource::WhyNot() const {
  return m_monitor && m_monitor->IsConnected() ? std::string() : "only for live traces";
}

void FilterAtSource::Set(bool on) {
  m_on = on;
  Send(m_owner.WhereInForce());
}

void FilterAtSource::Send(const WhereProgramPtr& program) {
  if (!WhyNot().empty()) return;
  std::string text;
  m_notTaken.clear();
  if (m_on && program && m_monitor->Frames().size() > 1) {
    m_notTaken = "the monitor has another window";
  } else if (m_on && program) {
    WhereError error;
    text = TextAtSource(program->Expr(), g_useUtc, error).value_or("");
    m_notTaken = std::move(error.reason);
  }
  if (text == m_sent) return;
  m_sent = text;
  m_monitor->FilterAtSource(text);
}

std::string FilterAtSource::Note() const {
  using Kind = SourceFilterState::Kind;
  if (!WhyNot().empty()) return {};
  if (!m_notTaken.empty()) return AllCome(m_notTaken);
  const TraceThread_i::Counts counts = m_monitor->Counts();
  const std::string sums =
      std::to_string(counts.withheld) + " withheld, " + std::to_string(counts.lost) + " lost.";
  const SourceFilterState state = m_monitor->SourceFilter();
  switch (state.kind) {
    case Kind::None:
      return counts.withheld == 0 ? "" : "At the source so far: " + sums;
    case Kind::Asked:
      return "The source has not answered yet.";
    case Kind::InForce:
      return "At the source: " + sums;
    case Kind::Refused:
      return AllCome(state.why);
    case Kind::Unknown:
      return AllCome("the service is of a version that cannot filter them");
  }
  return {};
}

bool FilterAtSource::HasNews() {
  // A window may have come or gone, or the zone of the times may be another one.
  Send(m_owner.WhereInForce());
  std::string note = Note();
  if (note == m_lastNote) return false;
  m_lastNote = std::move(note);
  return true;
}
