// What programs send in the form of OpenTelemetry: the bytes of a connection and the bodies of
// requests. The first byte chooses. A connection's requests are the same however its bytes are cut,
// and within their bounds. The records of a body hold what records promise, and those of spans
// nest.
#include <cstdlib>
#include <map>
#include <vector>

#include "quor/http/request_reader.h"
#include "quor/http/unpack.h"
#include "quor/otlp/otlp_mapper.h"
#include "quor/otlp/receive/otlp_answers.h"
#include "records/record_layout.h"

namespace {

constexpr std::size_t kBodyBytesMax = 1u << 16;

void Demand(bool holds) {
  if (!holds) std::abort();
}

class Checker final : public OtlpTaker {
 public:
  explicit Checker(bool onlySpans) : m_onlySpans(onlySpans) {}
  ~Checker() override {
    for (const auto& [lane, open] : m_open) Demand(open == 0);
  }

 private:
  void OnRecord(const OtlpSource& source, const OtlpRecord& record) override {
    for (const std::string_view text : {record.component, record.category, record.thread,
                                        record.file, record.text, record.stack}) {
      Demand(text.data() != nullptr && text.size() <= kLongestText);
      Demand(text.find('\0') == text.npos);
    }
    for (const std::string* name : {&source.machine, &source.application, &source.process})
      Demand(name->size() <= kLongestText && name->find('\0') == name->npos);
    Demand((record.date & 31) - 1 < 31 && (record.date >> 6 & 31) - 1 < 12);
    Demand((record.time >> 25) < 24 && (record.time & 2047) < 1000);
    if (!m_onlySpans) return;
    int& open = m_open[{source, std::string(record.thread)}];
    if (record.text.starts_with("Begin: ")) ++open;
    if (record.text.starts_with("End: ")) Demand(--open >= 0);
  }
  void OnEnd(const OtlpSource&) override {}

  const bool m_onlySpans;
  std::map<std::pair<OtlpSource, std::string>, int> m_open;  // by lane
};

// `twice`: the message comes again, later.
template <class Message>
void TakeBody(Bytes body, bool onlySpans, bool twice) {
  Message message;
  if (!message.ParseFromArray(body.data(), static_cast<int>(body.size()))) return;
  Checker checker(onlySpans);
  OtlpRules rules;
  rules.heldBytes = 4096;
  rules.heldBytesAll = 8192;
  OtlpMapper mapper(checker, rules);
  OtlpArrival arrival{"peer", 1'795'478'400'000'000'000, std::chrono::seconds(1)};
  mapper.Take(message, arrival);
  if (twice) {
    arrival.now = std::chrono::seconds(8);
    mapper.Tick(arrival.now);
    mapper.Take(message, arrival);
  }
  mapper.Flush();
  Demand(mapper.HeldSpans() == 0);
}

struct Taken {
  std::string head;
  std::vector<std::uint8_t> body;
  bool operator==(const Taken&) const = default;
};

struct Read {
  std::vector<Taken> requests;
  int status = 0;
};

Read ReadConnection(Bytes bytes, std::size_t piece) {
  using State = HttpRequestReader::State;
  HttpLimits limits;
  limits.bodyBytes = kBodyBytesMax;
  HttpRequestReader reader(limits);
  Read read;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t end = std::min(at + piece, bytes.size());
    while (at < end) {
      at += reader.Feed(bytes.subspan(at, end - at));
      if (reader.Now() == State::Failed) {
        read.status = reader.Status();
        Demand(read.status >= 400 && !reader.Why().empty());
        return read;
      }
      if (reader.Now() != State::Complete) continue;
      HttpRequest& request = reader.Request();
      Demand(request.body.size() <= kBodyBytesMax);
      OtlpRefusalByHead(request);
      read.requests.push_back({std::string(request.method) + ' ' + std::string(request.target),
                               std::move(request.body)});
      reader.Next();
    }
  }
  return read;
}

void TakePacked(BodyCoding coding, Bytes packed) {
  std::vector<std::uint8_t> bytes;
  std::string why;
  const Unpacking result = Unpack(coding, packed, kBodyBytesMax, bytes, &why);
  Demand(result == Unpacking::Done || !why.empty());
  Demand(result != Unpacking::Done || bytes.size() <= kBodyBytesMax);
  if (result == Unpacking::Done) TakeBody<quor::otlp::ExportLogs>(bytes, false, false);
}

void TakeConnection(Bytes bytes) {
  const Read whole = ReadConnection(bytes, bytes.size() + 1);
  for (const std::size_t piece : {1, 7}) {
    const Read cut = ReadConnection(bytes, piece);
    Demand(cut.requests == whole.requests && cut.status == whole.status);
  }
  for (const Taken& taken : whole.requests) {
    TakeBody<quor::otlp::ExportLogs>(taken.body, false, false);
    TakeBody<quor::otlp::ExportSpans>(taken.body, true, true);
    TakePacked(BodyCoding::Gzip, taken.body);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Bytes rest(data + 1, size - 1);
  switch (data[0] % 6) {
    case 0:
      TakeConnection(rest);
      break;
    case 1:
      TakeBody<quor::otlp::ExportLogs>(rest, false, data[0] >= 128);
      break;
    case 2:
    case 3:
      TakeBody<quor::otlp::ExportSpans>(rest, true, data[0] >= 128);
      break;
    case 4:
      TakePacked(BodyCoding::Gzip, rest);
      break;
    default:
      TakePacked(BodyCoding::Zlib, rest);
  }
  return 0;
}
