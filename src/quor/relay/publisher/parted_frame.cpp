#include "quor/relay/publisher/parted_frame.h"

#include <array>
#include <charconv>

#include "records/name_record.h"
#include "records/raw_trace.h"
#include "records/trc_walk.h"

namespace {

class FrameParts final : public DataSink {
 public:
  FrameParts(const TakenFrame& frame, std::vector<Envelope>& parts)
      : m_frame(frame), m_parts(parts) {}

  void OnName(HubNameId, std::string_view) override {}  // the frame's names have them all
  void OnTrace(const std::uint8_t* record, std::size_t bytes) override {
    const RawHubTrace trace(record);
    const auto ids = trace.Ids().All();
    if (!FitsInto(trace, NewNameBytes(ids) + kTagBytes + bytes, kTagBytes + bytes)) Begin(trace);
    std::vector<std::uint8_t>& traces = m_parts.back().traces;
    for (const HubNameId id : ids) AddName(id, traces);
    traces.push_back(kTagTrace);
    traces.insert(traces.end(), record, record + bytes);
    m_recordBytes += kTagBytes + bytes;
    if (trace.SequenceNumber() != kNoSequenceNumber)
      ++m_parts.back().delivered;
    else if (m_reports == kNone)
      m_reports = m_parts.size() - 1;
  }
  // The serials, when all records have come.
  void Finish() {
    if (m_parts.empty()) m_parts.emplace_back();
    m_parts[m_reports == kNone ? 0 : m_reports].lost = m_frame.lost;
    std::uint64_t serial = m_frame.serial - m_frame.delivered - m_frame.lost;
    for (Envelope& part : m_parts) {
      part.instance = m_frame.instance;
      serial += part.delivered + part.lost;
      part.serial = serial;
    }
  }

 private:
  static constexpr std::size_t kNone = ~std::size_t{0};

  std::string_view TextOf(HubNameId id) const {
    const auto found = m_frame.names->find(id);
    return found == m_frame.names->end() ? std::string_view() : std::string_view(found->second);
  }
  // The same id may be in it twice, which only makes the part a little smaller than it could be.
  std::size_t NewNameBytes(const std::array<HubNameId, 7>& ids) const {
    std::size_t bytes = 0;
    for (const HubNameId id : ids)
      if (!m_named.Has(id)) bytes += kNameRecordBytes + TextOf(id).size();
    return bytes;
  }
  bool FitsInto(const RawHubTrace& trace, std::size_t bytes, std::size_t ofRecord) const {
    if (m_parts.empty()) return false;
    if (trace.MachineId() != m_machine || trace.AppId() != m_app) return false;
    return m_recordBytes + ofRecord <= kPartBytes &&
           m_parts.back().traces.size() + bytes <= kPartBytesWithNames;
  }
  void Begin(const RawHubTrace& trace) {
    m_machine = trace.MachineId();
    m_app = trace.AppId();
    m_recordBytes = 0;
    m_named.Clear();
    Envelope& part = m_parts.emplace_back();
    part.machine = TextOf(m_machine);
    part.app = TextOf(m_app);
    const std::string_view pid = TextOf(trace.PidId());  // "4711", or "4711 alice"
    std::from_chars(pid.data(), pid.data() + pid.size(), part.pid);
    part.traces.assign(std::begin(kTrcHeader), std::end(kTrcHeader));
  }
  void AddName(HubNameId id, std::vector<std::uint8_t>& to) {
    if (m_named.Has(id)) return;
    m_named.Add(id);
    const auto found = m_frame.names->find(id);
    if (found != m_frame.names->end()) AppendNameRecord(to, id, found->second);
  }

  const TakenFrame& m_frame;
  std::vector<Envelope>& m_parts;
  HubNameId m_machine{}, m_app{};
  std::size_t m_recordBytes = 0, m_reports = kNone;
  IdSet<HubNameId> m_named;
};

}  // namespace

PartedFrame PartsOf(const TakenFrame& frame) {
  PartedFrame parted{frame.number, {}, false, frame.forgotten};
  if (frame.instance.empty()) return parted;
  FrameParts parts(frame, parted.envelopes);
  if (!frame.records.empty()) ReadDataBody(frame.records, parts, nullptr);  // it was checked
  if (!parted.envelopes.empty() || frame.lost > 0) parts.Finish();
  parted.isNameless = parted.envelopes.size() == 1 && parted.envelopes.front().traces.empty();
  return parted;
}
