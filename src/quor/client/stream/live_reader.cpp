#include "quor/client/stream/live_reader.h"

#include "quor/client/stream/loss_trace.h"
#include "records/name_record.h"

namespace {

constexpr std::size_t kPlaceBytesMax = 256, kKnownMax = 16384;
constexpr std::chrono::milliseconds kRest{10};

}  // namespace

void LiveReader::OnUp(Connection& connection, const quor::wire::Welcome& welcome) {
  m_machine = welcome.machine();
  m_connection = &connection;
  m_isRelay = welcome.is_relay();
  m_twiceBefore = m_twice;
  m_lateBefore = m_late;
  m_ledger.BeginStream(welcome.instance(), m_isRelay);
  m_firstOfStream = true;
  m_filter.OnUp(connection, welcome);
  quor::wire::Request request;
  request.set_id(++m_lastRequest);
  request.mutable_subscribe()->set_place(m_place);
  if (m_isRelay) m_ledger.PutKnown(kKnownMax, request.mutable_subscribe());
  connection.Send(FrameType::Request, request);
  if (m_paused) SendState(connection);
  m_up = true;
}

void LiveReader::SetPaused(bool paused) {
  m_paused = paused;
  m_link->Post([this](Connection* connection) {
    if (connection) SendState(*connection);
  });
}

void LiveReader::LookForRoom() {
  if (m_dropping && m_queue.IsHalfEmpty()) m_link->Post([this](Connection*) { CatchUp(); });
}

void LiveReader::SendState(Connection& connection) {
  quor::wire::Request request;
  request.set_id(++m_lastRequest);
  if (m_paused) {
    request.mutable_pause();
  } else {
    request.mutable_resume();
  }
  connection.Send(FrameType::Request, request);
}

void LiveReader::OnDown(const std::string&) {
  m_up = false;
  m_connection = nullptr;
  m_filter.OnDown();
  // Without its ledger a batch cannot be counted: its traces become part of the gap.
  DropStaged();
}

void LiveReader::DropStaged() {
  for (LiveBatch* const batch : m_staged) batch->Forget();
  m_staged.clear();
  m_stagedBytes = 0;
}

void LiveReader::OnFrame(const Frame& frame) {
  switch (frame.type) {
    case FrameType::Data:
      return TakeData(frame);
    case FrameType::Ledger:
      return TakeLedger(frame);
    case FrameType::Response:
      return TakeResponse(frame);
    default:
      return m_link->Break("a frame that a monitor does not expect");
  }
}

void LiveReader::TakeResponse(const Frame& frame) {
  quor::wire::Response response;
  if (!ParseBody(frame, &response)) return m_link->Break("a malformed response");
  if (m_filter.Takes(response)) return;
  if (response.error() != quor::wire::ERROR_NONE) m_link->Break("refused: " + response.text());
}

void LiveReader::TakeData(const Frame& frame) {
  std::string why;
  // A frame without traces costs memory as well.
  const std::size_t cost = sizeof(LiveBatch) + frame.body.size();
  if (m_stagedBytes + cost > kStagedBytesMax) return m_link->Break("data without a ledger");
  LiveBatch* const batch = LiveBatch::Read(frame.body, &why);
  if (!batch) return m_link->Break("malformed data: " + why);
  if (std::exchange(m_firstOfStream, false)) batch->MarkFirstOfStream();
  m_staged.push_back(batch);
  m_stagedBytes += cost;
}

void LiveReader::TakeLedger(const Frame& frame) {
  quor::wire::Ledger ledger;
  if (!ParseBody(frame, &ledger)) return m_link->Break("a malformed ledger");
  std::uint64_t gap = 0;
  std::string why;
  if (!m_ledger.Take(ledger, &gap, &why)) return m_link->Break(why);
  if (gap > 0) {
    m_gaps += gap;
    ReportLost(gap, "the connection was broken");
  }
  for (LiveBatch* const batch : m_staged) Deliver(batch);
  m_staged.clear();
  m_stagedBytes = 0;
  CatchUp();  // all may have been taken out before LookForRoom could know of the last ones
  m_lost.store(m_ledger.Lost() + m_gaps + m_allDropped, std::memory_order_relaxed);
  m_withheld.store(m_ledger.Withheld(), std::memory_order_relaxed);
  if (ledger.has_relay()) TakeRelay(ledger.relay());
  if (m_isRelay) AwaitRoom();
}

void LiveReader::TakeRelay(const quor::wire::Ledger::Relay& relay) {
  if (!m_isRelay || relay.place().size() > kPlaceBytesMax)
    return m_link->Break("a ledger with a place that cannot be");
  m_place = relay.place();
  m_twice.store(m_twiceBefore + relay.twice(), std::memory_order_relaxed);
  m_late.store(m_lateBefore + relay.late(), std::memory_order_relaxed);
}

// What a cluster stores can wait there: nothing is turned away.
void LiveReader::AwaitRoom() {
  if (m_connection && !m_queue.IsHalfEmpty()) m_connection->Rest(kRest);
}

void LiveReader::ReportLost(std::uint64_t traces, const char* reason) {
  m_queue.PushAlways(LiveBatch::Own(LossTraceBody(m_machine, traces, reason)));
}

void LiveReader::Deliver(LiveBatch* batch) {
  CatchUp();
  if (m_dropping || !m_queue.Push(batch)) DropTraces(batch);
}

// Later batches need the names in it.
void LiveReader::DropTraces(LiveBatch* batch) {
  m_dropping = true;
  m_droppedWhilePaused = m_paused;
  m_dropped += batch->Numbered();
  m_allDropped += batch->Numbered();
  if (batch->IsFirstOfStream()) {
    m_keptFirst = true;
    m_keptNames.clear();
    m_keptNameBytes = 0;
  }
  for (const LiveBatch::Name& name : batch->Names()) {
    if (m_keptNameBytes > kKeptNameBytesMax) break;  // the trace will have no name
    m_keptNameBytes += name.text.size();
    m_keptNames[name.id] = name.text;
  }
  batch->Forget();
}

void LiveReader::CatchUp() {
  if (!m_dropping || !m_queue.IsHalfEmpty()) return;
  std::vector<std::uint8_t> body;
  for (const auto& [id, text] : m_keptNames) AppendNameRecord(body, id, text);
  LiveBatch* const names = LiveBatch::Read(body, nullptr);
  if (std::exchange(m_keptFirst, false)) names->MarkFirstOfStream();
  m_queue.PushAlways(names);
  m_keptNames.clear();
  m_keptNameBytes = 0;
  m_dropping = false;
  if (const std::uint64_t lost = std::exchange(m_dropped, 0); lost > 0)
    ReportLost(lost,
               m_droppedWhilePaused ? "the monitor is paused" : "the monitor did not keep up");
}
