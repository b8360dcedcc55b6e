// A message of the relay, written and read again, and what is refused of one that somebody else
// wrote.
#include "quor/envelope/envelope.h"

#include <gtest/gtest.h>
#include <zstd.h>

#include <functional>
#include <random>

#include "quor/envelope/envelope.pb.h"
#include "support/trc_image.h"

namespace {

using quor::relay::EnvelopeMessage;

std::vector<std::uint8_t> BytesOf(const TrcImage& image) {
  const std::string& text = image.Bytes();
  return {text.begin(), text.end()};
}

TrcImage Named() {
  return TrcImage().Name(1, "web1").Name(2, "orders").Name(7, "Main");
}

TraceFields Text(std::string text) {
  return {.text = std::move(text), .machine = 1, .app = 2, .component = 7};
}

Envelope Sample(int traces = 3) {
  TrcImage image = Named();
  for (int i = 0; i < traces; ++i) image.Trace(Text("order " + std::to_string(i)));
  return {std::string(16, 'i'), "web1", "orders", 4711, 5000, static_cast<std::uint64_t>(traces), 2,
          BytesOf(image)};
}

class Envelopes : public ::testing::Test {
 protected:
  // As somebody writes it who checks nothing.
  static std::vector<std::uint8_t> Loose(const Envelope& envelope,
                                         const std::function<void(EnvelopeMessage&)>& change = {}) {
    EnvelopeMessage message;
    message.set_format(1);
    message.set_instance(envelope.instance);
    message.set_machine(envelope.machine);
    message.set_app(envelope.app);
    message.set_serial(envelope.serial);
    message.set_delivered(envelope.delivered);
    message.set_lost(envelope.lost);
    message.set_unpacked(static_cast<std::uint32_t>(envelope.traces.size()));
    message.set_traces(envelope.traces.data(), envelope.traces.size());
    if (change) change(message);
    std::vector<std::uint8_t> bytes(message.ByteSizeLong());
    message.SerializeToArray(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
  }
  // The reason; empty: it was read.
  static std::string WhyNot(const std::vector<std::uint8_t>& message) {
    Envelope read;
    std::string why;
    return ReadEnvelope(message, read, &why) ? "" : why;
  }
  static std::string WhyNot(const Envelope& envelope) { return WhyNot(Loose(envelope)); }
};

TEST_F(Envelopes, ComeBackAsTheyWere) {
  for (const int traces : {0, 1, 3, 1000}) {
    Envelope given = Sample(traces), read;
    if (traces == 0) given.traces.clear();
    std::vector<std::uint8_t> message;
    std::string why;
    ASSERT_TRUE(WriteEnvelope(given, message, &why)) << why;
    ASSERT_TRUE(ReadEnvelope(message, read, &why)) << why;
    EXPECT_EQ(read.instance, given.instance);
    EXPECT_EQ(read.machine + "/" + read.app, "web1/orders");
    EXPECT_EQ(read.pid, 4711u);
    EXPECT_EQ(read.serial, 5000u);
    EXPECT_EQ(read.delivered, given.delivered);
    EXPECT_EQ(read.lost, 2u);
    EXPECT_EQ(read.traces, given.traces);
    EXPECT_LT(message.size(), given.traces.size() / (traces == 1000 ? 4 : 1) + 200);
  }
}

TEST_F(Envelopes, TracesThatDoNotPackAreSentAsTheyAre) {
  std::string noise(60000, '\0');
  std::minstd_rand random(7);
  for (char& byte : noise) byte = static_cast<char>(random() | 1);
  Envelope given = Sample(0), read;
  given.delivered = 1;
  given.traces = BytesOf(Named().Trace(Text(noise)));
  std::vector<std::uint8_t> message;
  ASSERT_TRUE(WriteEnvelope(given, message, nullptr));
  ASSERT_TRUE(ReadEnvelope(message, read, nullptr));
  EXPECT_EQ(read.traces, given.traces);
}

TEST_F(Envelopes, AReportOfALossIsNotCountedAmongTheTraces) {
  Envelope envelope = Sample(0);
  envelope.traces = BytesOf(Named().Trace(Text("a")).Trace(
      {.text = "2 traces lost: the ring was full", .count = 0xFFFFFFFF, .machine = 1, .app = 2}));
  envelope.delivered = 1;
  EXPECT_EQ(WhyNot(envelope), "");
  envelope.delivered = 2;
  EXPECT_NE(WhyNot(envelope), "");
}

TEST_F(Envelopes, ThatContradictThemselvesAreRefused) {
  EXPECT_EQ(WhyNot(Sample()), "");
  Envelope envelope = Sample();
  envelope.delivered = 2;
  EXPECT_NE(WhyNot(envelope), "") << "a trace too many";
  envelope = Sample();
  envelope.serial = 4;
  EXPECT_NE(WhyNot(envelope), "") << "more than there were";
  envelope = Sample();
  envelope.lost = ~std::uint64_t{0};
  EXPECT_NE(WhyNot(envelope), "") << "a sum that wraps";
  envelope = Sample();
  envelope.instance = "short";
  EXPECT_NE(WhyNot(envelope), "");
  envelope = Sample();
  envelope.machine = "web2";
  EXPECT_NE(WhyNot(envelope), "") << "traces of another machine";
  envelope = Sample();
  envelope.app = "billing";
  EXPECT_NE(WhyNot(envelope), "") << "traces of another application";
  envelope = Sample();
  envelope.machine.push_back('\0');
  EXPECT_NE(WhyNot(envelope), "");
  envelope = Sample();
  envelope.traces.clear();
  EXPECT_NE(WhyNot(envelope), "") << "no traces, but three of them";
}

TEST_F(Envelopes, WhoseTracesAreNoWholeTraceFileAreRefused) {
  Envelope envelope = Sample();
  for (std::size_t size = 1; size < envelope.traces.size(); ++size) {
    Envelope cut = envelope;
    cut.traces.resize(size);
    EXPECT_NE(WhyNot(cut), "") << size;
  }
  envelope.traces.push_back(99);
  EXPECT_NE(WhyNot(envelope), "") << "a tag that is none";
  envelope = Sample();
  envelope.traces = BytesOf(Named().Trace(Text("a")).Name(2, "billing"));
  envelope.delivered = 1;
  EXPECT_NE(WhyNot(envelope), "") << "a second name under an id would rename what came before";
}

TEST_F(Envelopes, AreReadWithBoundsWhateverTheyPromise) {
  const Envelope sample = Sample();
  const auto packed = [&sample](std::size_t bytes) {
    const std::vector<std::uint8_t> zeros(bytes);
    std::string to(ZSTD_compressBound(bytes), '\0');
    to.resize(ZSTD_compress(to.data(), to.size(), zeros.data(), zeros.size(), 1));
    return Loose(sample, [&](EnvelopeMessage& message) {
      message.set_encoding(EnvelopeMessage::ZSTD);
      message.set_unpacked(static_cast<std::uint32_t>(bytes));
      message.set_traces(to);
    });
  };
  EXPECT_EQ(WhyNot(packed(64u << 20)), "it has too many traces");
  EXPECT_NE(WhyNot(packed(kEnvelopeTracesBytes)), "it has too many traces");
  for (const int by : {-1, 1, 1000}) {
    const auto other = Loose(sample, [&](EnvelopeMessage& message) {
      message.set_unpacked(static_cast<std::uint32_t>(sample.traces.size()) +
                           static_cast<std::uint32_t>(by));
    });
    EXPECT_EQ(WhyNot(other), "its traces have another size than it says");
  }
  EXPECT_NE(WhyNot(Loose(sample, [](EnvelopeMessage& m) { m.set_format(2); })), "");
  EXPECT_NE(WhyNot(Loose(sample,
                         [](EnvelopeMessage& m) {
                           m.set_encoding(static_cast<EnvelopeMessage::Encoding>(9));
                         })),
            "");
  EXPECT_NE(WhyNot(std::vector<std::uint8_t>()), "");
  EXPECT_NE(WhyNot(std::vector<std::uint8_t>(kEnvelopeBytes + 1)), "");
}

TEST_F(Envelopes, TwoPackedPiecesAreNotTakenForOne) {
  const Envelope sample = Sample();
  std::string to(ZSTD_compressBound(sample.traces.size()), '\0');
  to.resize(ZSTD_compress(to.data(), to.size(), sample.traces.data(), sample.traces.size(), 1));
  const auto with = [&](const std::string& traces) {
    return Loose(sample, [&](EnvelopeMessage& message) {
      message.set_encoding(EnvelopeMessage::ZSTD);
      message.set_traces(traces);
    });
  };
  EXPECT_EQ(WhyNot(with(to)), "");
  EXPECT_NE(WhyNot(with(to + to)), "");
  EXPECT_NE(WhyNot(with(to + "x")), "");
  EXPECT_NE(WhyNot(with(to.substr(0, to.size() - 1))), "");
}

TEST_F(Envelopes, TooLargeForTheEngineAreNotWritten) {
  std::string noise(60000, '\0');
  std::minstd_rand random(7);
  Envelope envelope = Sample(0);
  TrcImage image = Named();
  for (int i = 0; i < 20; ++i) {
    for (char& byte : noise) byte = static_cast<char>(random() | 1);
    image.Trace(Text(noise));
  }
  envelope.delivered = 20;
  envelope.traces = BytesOf(image);
  std::vector<std::uint8_t> message;
  std::string why;
  EXPECT_FALSE(WriteEnvelope(envelope, message, &why));
  EXPECT_EQ(why, "a message would be too large");
}

TEST(Words, ComeBackAsTheyWereAndMalformedOnesAreRefused) {
  MachineWord given{"web1",
                    {{std::string(16, 'a'), "orders", 7, false},
                     {std::string(16, 'b'), "", ~std::uint64_t{0}, true}}};
  std::vector<std::uint8_t> message;
  MachineWord read;
  std::string why;
  ASSERT_TRUE(WriteWord(given, message, &why)) << why;
  ASSERT_TRUE(ReadWord(message, read, &why)) << why;
  ASSERT_EQ(read.sources.size(), 2u);
  EXPECT_EQ(read.machine, "web1");
  EXPECT_EQ(read.sources[0].app, "orders");
  EXPECT_EQ(read.sources[0].serial, 7u);
  EXPECT_FALSE(read.sources[0].ended);
  EXPECT_EQ(read.sources[1].serial, ~std::uint64_t{0});
  EXPECT_TRUE(read.sources[1].ended);
  given.sources[0].instance = "short";
  ASSERT_TRUE(WriteWord(given, message, nullptr));
  EXPECT_FALSE(ReadWord(message, read, nullptr));
  EXPECT_FALSE(ReadWord({}, read, nullptr));
}

}  // namespace
