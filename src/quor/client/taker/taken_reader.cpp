#include "quor/client/taker/taken_reader.h"

#include <algorithm>

#include "base/fail_with.h"
#include "records/raw_trace.h"

namespace {

constexpr std::size_t kNameBytesMax = 64u << 20;
constexpr std::size_t kSourcesMax = 65536;

}  // namespace

void TakenReader::BeginStream(const std::string& service) {
  m_ledger.BeginStream(service);
  m_stream.clear();
  m_given = 0;
  m_firstOfStream = true;
}

void TakenReader::BeginConnection(std::uint64_t taken) {
  m_received = taken;
  m_given = std::max(m_given, taken);
  m_lines.clear();
  m_names.clear();
  m_nameBytes = 0;
  m_data.clear();
  m_numbered = 0;
  m_began = false;
}

void TakenReader::OnName(HubNameId id, std::string_view utf8) {
  std::string& text = m_names[id];
  m_nameBytes += utf8.size() - text.size();
  text = utf8;
}

void TakenReader::OnTrace(const std::uint8_t* record, std::size_t) {
  if (RawHubTrace(record).SequenceNumber() != kNoSequenceNumber) ++m_numbered;
}

bool TakenReader::TakeData(Bytes body, std::string* why) {
  if (!m_began || !m_data.empty()) return FailWith(why, "a data frame without a ledger before it");
  if (body.empty()) return FailWith(why, "an empty data frame");
  if (!ReadDataBody(body, *this, why)) return false;
  if (m_nameBytes > kNameBytesMax) return FailWith(why, "more names than there can be");
  m_data.assign(body.begin(), body.end());
  return true;
}

bool TakenReader::TakeLedger(const quor::wire::Ledger& ledger, std::string* why) {
  return m_began ? TakeFrame(ledger, why) : TakeFirst(ledger, why);
}

bool TakenReader::Count(const quor::wire::Ledger& ledger, std::string* why) {
  std::uint64_t gap = 0;
  if (!m_ledger.Take(ledger, &gap, why)) return false;
  m_gaps += gap;
  if (gap > 0) m_tell(gap);
  return true;
}

bool TakenReader::TakeFirst(const quor::wire::Ledger& ledger, std::string* why) {
  for (const auto& line : ledger.sources()) {
    if (line.delivered() + line.lost() + line.withheld() != 0)
      return FailWith(why, "the first ledger counts what has not come");
    m_lines[line.instance()] = line;
  }
  m_began = true;
  // Over a further connection it is about what is known already.
  return !std::exchange(m_firstOfStream, false) || Count(ledger, why);
}

bool TakenReader::ReadSource(const quor::wire::Ledger::Source& line, TakenFrame& frame,
                             std::string* why) {
  const auto known = m_lines.find(line.instance());
  const bool isNew = known == m_lines.end();
  if (isNew && m_lines.size() >= kSourcesMax)
    return FailWith(why, "more sources than can be told apart");
  const quor::wire::Ledger::Source before = isNew ? quor::wire::Ledger::Source() : known->second;
  if (line.delivered() < before.delivered() || line.lost() < before.lost())
    return FailWith(why, "a ledger's count falls");
  frame.instance = line.instance();
  frame.serial = line.serial();
  frame.delivered = line.delivered() - before.delivered();
  frame.lost = line.lost() - before.lost();
  if (frame.delivered > line.serial() || frame.lost > line.serial() - frame.delivered)
    return FailWith(why, "a ledger counts more than there was");
  const std::uint64_t from = line.serial() - frame.delivered - frame.lost;
  if (!isNew && from != before.serial())
    return FailWith(why, "a ledger leaves out a part of its source");
  m_lines[line.instance()] = line;
  return true;
}

bool TakenReader::TakeFrame(const quor::wire::Ledger& ledger, std::string* why) {
  TakenFrame frame;
  if (ledger.sources_size() > 1) return FailWith(why, "a frame of more than one source");
  if (ledger.sources_size() == 1 && !ReadSource(ledger.sources(0), frame, why)) return false;
  if (frame.delivered != m_numbered) return FailWith(why, "a ledger does not count what came");
  for (const auto& line : ledger.forgotten_sources()) {
    frame.forgotten.push_back(line.instance());
    m_lines.erase(line.instance());
  }
  frame.number = ++m_received;
  const bool isNew = frame.number > m_given;
  if (isNew && !Add(ledger, frame, why)) return false;
  frame.records = m_data;
  frame.names = &m_names;
  if (isNew) {
    m_given = frame.number;
    m_give(frame);
  }
  m_data.clear();
  m_numbered = 0;
  return true;
}

// The lines count from the beginning of the connection, the sums from that of the stream.
bool TakenReader::Add(quor::wire::Ledger ledger, const TakenFrame& frame, std::string* why) {
  if (ledger.sources_size() == 1) {
    if (m_stream.size() >= kSourcesMax && !m_stream.contains(frame.instance))
      return FailWith(why, "more sources than can be told apart");
    Counts& counts = m_stream[frame.instance];
    counts.delivered += frame.delivered;
    counts.lost += frame.lost;
    ledger.mutable_sources(0)->set_delivered(counts.delivered);
    ledger.mutable_sources(0)->set_lost(counts.lost);
  }
  for (const std::string& instance : frame.forgotten) m_stream.erase(instance);
  return Count(ledger, why);
}
