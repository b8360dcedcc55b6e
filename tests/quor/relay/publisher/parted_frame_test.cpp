// Frames as envelopes that need no other one.
#include "quor/relay/publisher/parted_frame.h"

#include <gtest/gtest.h>

#include "taken_frames.h"

namespace {

const std::string kSource(16, 's');

// Each envelope, written and read again as a reader would.
std::vector<Envelope> ReadAgain(const PartedFrame& parted) {
  std::vector<Envelope> read;
  for (const Envelope& envelope : parted.envelopes) {
    std::vector<std::uint8_t> message;
    std::string why;
    EXPECT_TRUE(WriteEnvelope(envelope, message, &why)) << why;
    EXPECT_LE(message.size(), kEnvelopeBytes);
    EXPECT_TRUE(ReadEnvelope(message, read.emplace_back(), &why)) << why;
  }
  return read;
}

// The serials of the envelopes follow each other and are those of the frame.
void ExpectCovers(const std::vector<Envelope>& envelopes, const TakenFrame& frame) {
  std::uint64_t serial = frame.serial - frame.delivered - frame.lost, delivered = 0;
  for (const Envelope& envelope : envelopes) {
    EXPECT_EQ(envelope.serial - envelope.delivered - envelope.lost, serial);
    serial = envelope.serial;
    delivered += envelope.delivered;
  }
  EXPECT_EQ(serial, frame.serial);
  EXPECT_EQ(delivered, frame.delivered);
}

TEST(PartedFrames, AnOrdinaryFrameIsOneEnvelopeWithTheNamesThatItUses) {
  MadeFrame frame(9, kSource, 50);
  frame.Name(4, "Main").Name(5, "unused").Trace("a", 2, 4).Trace("b").Lost(3);
  const PartedFrame parted = PartsOf(frame.Get());
  EXPECT_EQ(parted.number, 9u);
  EXPECT_FALSE(parted.isNameless);
  const auto read = ReadAgain(parted);
  ASSERT_EQ(read.size(), 1u);
  ExpectCovers(read, frame.Get());
  EXPECT_EQ(read[0].machine + "/" + read[0].app, "web1/orders");
  EXPECT_EQ(read[0].pid, 4711u);
  EXPECT_EQ(read[0].lost, 3u);
  const std::string traces(read[0].traces.begin(), read[0].traces.end());
  EXPECT_NE(traces.find("Main"), traces.npos);
  EXPECT_EQ(traces.find("unused"), traces.npos);
}

TEST(PartedFrames, ALargeFrameIsSplitBetweenRecordsAndEachPartHasItsNames) {
  MadeFrame frame(1, kSource, 1000);
  for (int i = 0; i < 40; ++i) frame.Trace(std::string(20000, static_cast<char>('a' + i % 20)));
  frame.Lost(7);
  const auto read = ReadAgain(PartsOf(frame.Get()));
  EXPECT_GE(read.size(), 8u);
  ExpectCovers(read, frame.Get());
  for (const Envelope& envelope : read) EXPECT_LE(envelope.traces.size(), kPartBytes + 200);
}

TEST(PartedFrames, ARecordWithTheLongestTextsAndNamesStillFitsIntoAMessage) {
  MadeFrame frame(1, kSource, 3);
  for (const NameId id : {1, 2, 3, 4, 5}) {
    std::string noise(65535, '\0');
    for (std::size_t i = 0; i < noise.size(); ++i)
      noise[i] = static_cast<char>(1 + (i * 7919u * id + i / 13 * 31) % 255);
    frame.Name(id, noise);
  }
  frame.Trace(std::string(65535, 'x'), 2, 4).Trace("b", 2, 5).Trace("c", 2, 5);
  ExpectCovers(ReadAgain(PartsOf(frame.Get())), frame.Get());
}

TEST(PartedFrames, TracesOfTwoApplicationsAreTwoEnvelopes) {
  MadeFrame frame(1, kSource, 10);
  frame.Name(8, "billing").Trace("a").Trace("b", 8).Trace("c", 8).Trace("d");
  const auto read = ReadAgain(PartsOf(frame.Get()));
  ASSERT_EQ(read.size(), 3u);
  ExpectCovers(read, frame.Get());
  EXPECT_EQ(read[1].app, "billing");
  EXPECT_EQ(read[1].delivered, 2u);
}

TEST(PartedFrames, ALossStandsWithItsReport) {
  MadeFrame frame(1, kSource, 10);
  frame.Name(8, "billing").Trace("a", 8).Report("2 traces lost: the ring was full").Lost(2);
  const auto read = ReadAgain(PartsOf(frame.Get()));
  ASSERT_EQ(read.size(), 2u);
  ExpectCovers(read, frame.Get());
  EXPECT_EQ(read[0].lost, 0u);
  EXPECT_EQ(read[1].lost, 2u);
}

TEST(PartedFrames, ALossAloneHasNoName) {
  MadeFrame frame(1, kSource, 10);
  frame.Lost(4);
  const PartedFrame parted = PartsOf(frame.Get());
  EXPECT_TRUE(parted.isNameless);
  ExpectCovers(ReadAgain(parted), frame.Get());
}

TEST(PartedFrames, WhatSpeaksOfNoTraceIsNoEnvelope) {
  MadeFrame frame(1, kSource, 10);
  const PartedFrame parted = PartsOf(frame.Forgotten("x").Get());
  EXPECT_TRUE(parted.envelopes.empty());
  EXPECT_EQ(parted.forgotten.size(), 1u);
  MadeFrame ofNone(1, "", 0);
  EXPECT_TRUE(PartsOf(ofNone.Get()).envelopes.empty());
}

}  // namespace
