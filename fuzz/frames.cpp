// Any bytes as the data of a peer: split into frames, each parsed as every type that it could be,
// the ledgers added up, the data given out as traces, and as the frames of a stream that is taken.
#include <cstdlib>

#include "quor/client/stream/gap_ledger.h"
#include "quor/client/stream/live_batch.h"
#include "quor/client/stream/name_mapper.h"
#include "quor/client/taker/taken_reader.h"
#include "quor/protocol/frames.h"
#include "quor/protocol/machine.h"
#include "quor/protocol/quor.pb.h"

namespace {

template <class Message>
void Parse(Bytes body) {
  Message message;
  if (message.ParseFromArray(body.data(), static_cast<int>(body.size())) &&
      message.ByteSizeLong() != message.SerializeAsString().size())
    std::abort();
}

class Peer {
 public:
  void Take(const Frame& frame) {
    if (frame.body.size() > kControlFrameBytesMax) std::abort();
    Parse<quor::wire::Hello>(frame.body);
    Parse<quor::wire::Welcome>(frame.body);
    Parse<quor::wire::Refused>(frame.body);
    Parse<quor::wire::Request>(frame.body);
    Parse<quor::wire::Response>(frame.body);
    Parse<quor::wire::Taken>(frame.body);
    TakeLedger(frame.body);
    TakeData(frame.body);
    TakeTaken(frame);
    ParseMachine({frame.body.begin(), frame.body.end()});
  }

 private:
  void TakeLedger(Bytes body) {
    quor::wire::Ledger ledger;
    if (!ledger.ParseFromArray(body.data(), static_cast<int>(body.size()))) return;
    std::uint64_t gap = 0;
    std::string why;
    // Half of the ledgers come on a stream that asked for a filter.
    if (body.size() % 2 == 0) m_ledger.ExpectWithheld();
    const std::uint64_t before = m_ledger.Delivered() + m_ledger.Withheld() + m_ledger.Lost();
    if (!m_ledger.Take(ledger, &gap, &why)) {
      if (why.empty()) std::abort();
      m_ledger.BeginStream();
    }
    if (m_ledger.Delivered() + m_ledger.Withheld() + m_ledger.Lost() < before) std::abort();
    CheckSums();
  }
  // No line, however it lies, makes a sum wrap.
  void CheckSums() const {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 60;
    if (m_ledger.Delivered() > kMost || m_ledger.Withheld() > kMost || m_ledger.Lost() > kMost)
      std::abort();
  }
  void TakeData(Bytes body) {
    std::string why;
    LiveBatch* const batch = LiveBatch::Read(body, &why);
    if (!batch) {
      if (why.empty()) std::abort();
      return;
    }
    for (std::size_t i = 0; i < batch->Traces(); ++i) {
      m_mapper.Map(*batch, i);
      TraceEvent_i* const trace = batch->Give(i);
      if (trace->GetText().size() > 65535 || trace->GetStack().size() > 65535) std::abort();
      // Whatever id came, its result is an id of ours, or none.
      for (const NameId id :
           {trace->GetMachineId(), trace->GetAppId(), trace->GetComponentId(),
            trace->GetCategoryId(), trace->GetPidId(), trace->GetTidId(), trace->GetSourceFileId()})
        if (id != 0 && !m_names.contains(id)) std::abort();
      trace->Release();
    }
    m_mapper.Map(*batch, batch->Traces());
    batch->Forget();
  }

  // As the client of a taken stream, over as many connections as there are faults.
  void TakeTaken(const Frame& frame) {
    quor::wire::Ledger ledger;
    std::string why;
    const std::uint64_t before = m_taken.Delivered() + m_taken.Lost();
    bool good = true;
    if (frame.type == FrameType::Data) good = m_taken.TakeData(frame.body, &why);
    if (frame.type == FrameType::Ledger && ParseBody(frame, &ledger))
      good = m_taken.TakeLedger(ledger, &why);
    if (m_taken.Delivered() + m_taken.Lost() < before) std::abort();
    if (good) return;
    if (why.empty()) std::abort();
    if (frame.body.size() % 2 == 0) m_taken.BeginStream({});
    m_taken.BeginConnection(frame.body.size() % 3);
  }
  void Check(const TakenFrame& frame) {
    if (frame.number != m_taken.Given()) std::abort();
    if (frame.delivered > frame.serial || frame.lost > frame.serial - frame.delivered) std::abort();
    if (frame.delivered > 0 && frame.records.empty()) std::abort();
  }

  TakenReader m_taken{[this](const TakenFrame& frame) { Check(frame); }, [](std::uint64_t) {}};
  GapLedger m_ledger;
  NameMap m_names;
  NameMapper m_mapper{m_names};
};

}  // namespace

// The first byte determines the pieces in which the rest arrives.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t piece = std::size_t{data[0]} + 1;
  const Bytes stream(data + 1, size - 1);
  FrameReader reader;
  Peer peer;
  for (std::size_t at = 0; at < stream.size() && reader.Error().empty(); at += piece) {
    reader.Feed(stream.subspan(at, std::min(piece, stream.size() - at)));
    while (const auto frame = reader.Next()) peer.Take(*frame);
    if (reader.BufferedBytes() > kControlFrameBytesMax + piece + 4) std::abort();
  }
  return 0;
}
