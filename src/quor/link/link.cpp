#include "quor/link/link.h"

#include <algorithm>

#include "quor/ring/cut_length.h"

namespace {

constexpr std::size_t kLengthBytes = 4;

class FrameWriter {
 public:
  explicit FrameWriter(LinkType type) : m_bytes(kLengthBytes) { Put8(static_cast<int>(type)); }
  FrameWriter& Put8(int value) {
    m_bytes.push_back(static_cast<std::uint8_t>(value));
    return *this;
  }
  FrameWriter& Put32(std::uint32_t value) {
    m_bytes.resize(m_bytes.size() + 4);
    StoreBe32(m_bytes.data() + m_bytes.size() - 4, value);
    return *this;
  }
  FrameWriter& Put64(std::uint64_t value) {
    m_bytes.resize(m_bytes.size() + 8);
    StoreBe64(m_bytes.data() + m_bytes.size() - 8, value);
    return *this;
  }
  FrameWriter& PutText(const std::string& text) {
    const std::size_t length = CutLength(text.data(), text.size(), kLinkTextMax);
    Put8(static_cast<int>(length >> 8)).Put8(static_cast<int>(length & 0xFF));
    m_bytes.insert(m_bytes.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
    return *this;
  }
  std::vector<std::uint8_t> Take() {
    StoreBe32(m_bytes.data(), static_cast<std::uint32_t>(m_bytes.size() - kLengthBytes));
    return std::move(m_bytes);
  }

 private:
  std::vector<std::uint8_t> m_bytes;
};

// Reads the fields of a body. After one missing field every later one fails too.
class BodyReader {
 public:
  explicit BodyReader(Bytes body) : m_body(body) {}
  std::uint8_t Get8() { return Has(1) ? *Step(1) : std::uint8_t{0}; }
  std::uint32_t Get32() { return Has(4) ? LoadBe32(Step(4)) : 0; }
  std::uint64_t Get64() { return Has(8) ? LoadBe64(Step(8)) : 0; }
  std::string GetText() {
    const std::size_t length = Has(2) ? LoadBe16(Step(2)) : 0;
    if (length > kLinkTextMax || !Has(length)) {
      m_good = false;
      return {};
    }
    return std::string(reinterpret_cast<const char*>(Step(length)), length);
  }
  RingTaker GetTaker() {
    const std::uint8_t value = Get8();
    m_good = m_good && value <= static_cast<std::uint8_t>(RingTaker::Service);
    return static_cast<RingTaker>(value);
  }
  bool Good() const { return m_good; }
  bool AtEnd() const { return m_good && m_at == m_body.size(); }

 private:
  bool Has(std::size_t bytes) {
    m_good = m_good && m_body.size() - m_at >= bytes;
    return m_good;
  }
  const std::uint8_t* Step(std::size_t bytes) {
    m_at += bytes;
    return m_body.data() + m_at - bytes;
  }
  Bytes m_body;
  std::size_t m_at = 0;
  bool m_good = true;
};

bool ReadHello(BodyReader& body, LinkHello& hello) {
  hello.version = body.Get32();
  // The rest of another version's hello is unknown: it is refused by its version alone.
  if (hello.version != kLinkVersion) return body.Good();
  hello.pid = body.Get32();
  hello.startedNs = body.Get64();
  hello.device = body.Get64();
  hello.inode = body.Get64();
  hello.taker = body.GetTaker();
  hello.app = body.GetText();
  return body.AtEnd();
}

bool ReadSink(BodyReader& body, LinkSink& sink) {
  const std::uint8_t kind = body.Get8();
  sink.kind = static_cast<SinkKind>(kind);
  sink.name = body.GetText();
  sink.options = body.GetText();
  return body.AtEnd() && kind <= static_cast<std::uint8_t>(SinkKind::Socket);
}

bool ReadBody(BodyReader& body, LinkFrame& frame) {
  switch (frame.type) {
    case LinkType::Hello:
      return ReadHello(body, frame.hello);
    case LinkType::Welcome:
      frame.version = body.Get32();
      return body.AtEnd();
    case LinkType::Refused:
      frame.refused.version = body.Get32();
      frame.refused.reason = body.GetText();
      return body.AtEnd();
    case LinkType::Sink:
      return ReadSink(body, frame.sink);
    case LinkType::Taker:
      frame.taker = body.GetTaker();
      return body.AtEnd();
    case LinkType::Report:
      frame.report.lost = body.Get64();
      frame.report.text = body.GetText();
      return body.AtEnd();
    case LinkType::Rules:
      frame.rules = body.GetText();
      return body.AtEnd();
    case LinkType::Poke:
    case LinkType::Points:
    case LinkType::Call:
      return body.AtEnd();
  }
  return false;
}

}  // namespace

std::vector<std::uint8_t> EncodeHello(const LinkHello& hello) {
  return FrameWriter(LinkType::Hello)
      .Put32(hello.version)
      .Put32(hello.pid)
      .Put64(hello.startedNs)
      .Put64(hello.device)
      .Put64(hello.inode)
      .Put8(static_cast<int>(hello.taker))
      .PutText(hello.app)
      .Take();
}

std::vector<std::uint8_t> EncodeWelcome() {
  return FrameWriter(LinkType::Welcome).Put32(kLinkVersion).Take();
}

std::vector<std::uint8_t> EncodeRefused(const std::string& reason) {
  return FrameWriter(LinkType::Refused).Put32(kLinkVersion).PutText(reason).Take();
}

std::vector<std::uint8_t> EncodeSink(const LinkSink& sink) {
  return FrameWriter(LinkType::Sink)
      .Put8(static_cast<int>(sink.kind))
      .PutText(sink.name)
      .PutText(sink.options)
      .Take();
}

std::vector<std::uint8_t> EncodePoke() {
  return FrameWriter(LinkType::Poke).Take();
}

std::vector<std::uint8_t> EncodeTaker(RingTaker taker) {
  return FrameWriter(LinkType::Taker).Put8(static_cast<int>(taker)).Take();
}

std::vector<std::uint8_t> EncodePoints() {
  return FrameWriter(LinkType::Points).Take();
}

std::vector<std::uint8_t> EncodeRules(const std::string& rules) {
  return FrameWriter(LinkType::Rules).PutText(rules).Take();
}

std::vector<std::uint8_t> EncodeCall() {
  return FrameWriter(LinkType::Call).Take();
}

std::vector<std::uint8_t> EncodeReport(const LinkReport& report) {
  return FrameWriter(LinkType::Report).Put64(report.lost).PutText(report.text).Take();
}

LinkDecoder::Result LinkDecoder::Feed(const std::uint8_t*& from, const std::uint8_t* end,
                                      LinkFrame& frame) {
  if (*m_why != '\0') return Result::Error;
  while (from != end || m_bytes.size() >= kLengthBytes) {
    std::size_t wanted = kLengthBytes;
    if (m_bytes.size() >= kLengthBytes) {
      const std::uint32_t length = LoadBe32(m_bytes.data());
      if (length == 0) return Fail("an empty frame");
      if (length > kLinkFrameMax) return Fail("a frame that is too long");
      wanted += length;
    }
    const std::size_t taken =
        std::min(wanted - m_bytes.size(), static_cast<std::size_t>(end - from));
    m_bytes.insert(m_bytes.end(), from, from + taken);
    from += taken;
    if (m_bytes.size() < wanted) return Result::More;
    if (wanted == kLengthBytes) continue;
    frame = LinkFrame();
    frame.type = static_cast<LinkType>(m_bytes[kLengthBytes]);
    BodyReader body(Bytes(m_bytes).subspan(kLengthBytes + 1));
    if (!ReadBody(body, frame)) return Fail("a frame that is not what its type says");
    m_bytes.clear();
    return Result::Frame;
  }
  return Result::More;
}

LinkDecoder::Result LinkDecoder::Fail(const char* why) {
  m_why = why;
  return Result::Error;
}
