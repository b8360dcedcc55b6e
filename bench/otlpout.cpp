// Traces made into the requests of OpenTelemetry that quor-bridge otlp-out sends, compared with a
// loop that only walks the records of the same frames, on one core.
#include <cstdlib>

#include "bench/ratio.h"
#include "quor/otlp/send/frame_sender.h"
#include "quor/otlp/send/frame_traces.h"
#include "records/record_fields.h"

namespace {

constexpr unsigned kFrames = 20, kTracesOfFrame = 900;
constexpr int kTurns = 25;

// Of every six traces two are a block.
std::vector<std::uint8_t> Records(unsigned frame) {
  std::vector<std::uint8_t> bytes;
  for (unsigned i = 0; i < kTracesOfFrame; ++i) {
    const unsigned number = frame * kTracesOfFrame + i;
    const std::string text = i % 6 == 0 ? "Begin: fetch articles"
                             : i % 6 == 5
                                 ? "End: fetch articles"
                                 : "order " + std::to_string(number) + " is stored in 12 ms";
    const auto id = [](unsigned of) { return static_cast<HubNameId>(of); };
    const RecordFieldsOf<HubNameId> fields{
        .count = number,
        .machine = id(1),
        .app = id(2),
        .component = id(4 + i % 3),
        .category = id(7),
        .date = PackDate(2026, 11, 24),
        .time = PackTime(9, 41, number / 1000 % 60, number % 1000),
        .ticCount = 5'000'000'000'000 + std::uint64_t{number} * 1'000'000'000,
        .pid = id(3),
        .tid = id(8),
        .attributes = kAttributeInfo,
        .sourceFile = id(9),
        .sourceLine = 42,
        .text = text};
    std::vector<std::uint8_t> record;
    MakeRecord(fields, record);
    bytes.push_back(kTagTrace);
    bytes.insert(bytes.end(), record.begin(), record.end());
  }
  return bytes;
}

class Walk final : private DataSink {
 public:
  void Over(Bytes records) {
    if (!ReadDataBody(records, *this, nullptr)) std::abort();
  }
  std::uint64_t bytes = 0;

 private:
  void OnName(HubNameId, std::string_view) override {}
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    bytes += RawHubTrace(record).Text().size();
  }
};

class Frames {
 public:
  Frames() {
    HubNameId id{};
    for (const char* const name :
         {"", "web1", "orders", "4711", "Net", "Db", "Shop", "Order", "main", "shop.cpp"}) {
      m_names[id] = name;
      id = static_cast<HubNameId>(static_cast<unsigned>(id) + 1);
    }
    for (unsigned i = 0; i < kFrames; ++i) m_records.push_back(Records(i));
  }
  template <class Then>
  void ForEach(Then then) const {
    TakenFrame frame;
    frame.instance = std::string(16, 's');
    frame.names = &m_names;
    for (const auto& records : m_records) {
      ++frame.number;
      frame.serial += kTracesOfFrame;
      frame.delivered = kTracesOfFrame;
      frame.records = records;
      then(frame);
    }
  }

 private:
  TakenNames m_names;
  std::vector<std::vector<std::uint8_t>> m_records;
};

void Map(const Frames& frames) {
  std::size_t bytes = 0;
  OutRequests requests([&](const OutRequest& request) { bytes += request.body.size(); });
  OutSources sources("web1");
  frames.ForEach([&](const TakenFrame& frame) {
    FrameTraces traces(frame);
    sources.Take({frame.instance, frame.serial, frame.delivered, 0, traces.All()}, requests);
  });
  requests.Flush();
  if (bytes == 0) std::abort();
}

void Pack(const Frames& frames) {
  FrameSender sender(
      "web1", {}, [](const std::string&) {}, 1);
  frames.ForEach([&](const TakenFrame& frame) { sender.Add(frame, {}); });
  sender.Flush({});
  if (sender.Queue().Bytes() == 0) std::abort();
}

void Print(const char* what, double target, const Frames& frames,
           const std::function<void(const Frames&)>& work) {
  const Measured measured = MeasureBeside(
      kTurns,
      [&] {
        Walk walk;
        frames.ForEach([&](const TakenFrame& frame) { walk.Over(frame.records); });
        if (walk.bytes == 0) std::abort();
      },
      [&] { work(frames); });
  constexpr double kNsEach = 1e9 / (kFrames * kTracesOfFrame);
  PrintRow(what, measured.seconds * kNsEach, "ns/record", measured.floorSeconds * kNsEach,
           measured.ratio, target);
}

}  // namespace

int main() {
  const Frames frames;
  Print("otlpout, traces to requests, to a walk", 150, frames, Map);
  Print("otlpout, the same, packed, to a walk", 200, frames, Pack);
}
