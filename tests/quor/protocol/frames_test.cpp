#include "quor/protocol/frames.h"

#include <gtest/gtest.h>

#include "support/trc_image.h"

namespace {

Bytes Of(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
std::string Text(Bytes bytes) {
  return {bytes.begin(), bytes.end()};
}
std::vector<std::uint8_t> Header(std::uint32_t length, std::uint8_t type) {
  std::vector<std::uint8_t> header(5);
  StoreBe32(header.data(), length);
  header[4] = type;
  return header;
}

// A data body as a service would send it.
std::string Body() {
  TrcImage image("");
  image.Name(7, "web").Trace({.text = "up", .machine = 7}).Name(8, "db").Trace({.stack = "main"});
  return image.Bytes();
}

struct HeardData final : DataSink {
  void OnName(HubNameId id, std::string_view utf8) override {
    words += "name " + std::to_string(IdNumber(id)) + " " + std::string(utf8) + "\n";
  }
  void OnTrace(const std::uint8_t* record, std::size_t bytes) override {
    words +=
        "trace of " + std::to_string(bytes) + " " + std::string(RawTrace(record).Text()) + "\n";
  }
  std::string words;
};

TEST(FrameReader, FramesComeOutWholeHoweverTheBytesAreSplit) {
  std::vector<std::uint8_t> stream;
  for (const std::string body : {"", "a", "hello", "a longer body of a frame"}) {
    const auto frame = EncodeFrame(FrameType::Request, body);
    stream.insert(stream.end(), frame.begin(), frame.end());
  }
  for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
    FrameReader reader;
    std::string got;
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      reader.Feed(Bytes(stream).subspan(at, std::min(piece, stream.size() - at)));
      while (const auto frame = reader.Next()) {
        EXPECT_EQ(frame->type, FrameType::Request);
        got += Text(frame->body) + "|";
      }
    }
    EXPECT_EQ(got, "|a|hello|a longer body of a frame|") << "pieces of " << piece;
    EXPECT_EQ(reader.BufferedBytes(), 0u);
    EXPECT_EQ(reader.Error(), "");
  }
}

TEST(FrameReader, WritingIntoItsRoomIsTheSameAsFeeding) {
  const auto frame = EncodeFrame(FrameType::Hello, std::string("hi"));
  FrameReader reader;
  for (const std::uint8_t byte : frame) {
    reader.Room(1000)[0] = byte;
    reader.Filled(1);
  }
  const auto got = reader.Next();
  ASSERT_TRUE(got);
  EXPECT_EQ(Text(got->body), "hi");
}

TEST(FrameReader, ALengthOfZeroIsAnError) {
  FrameReader reader;
  reader.Feed(Header(0, 4));
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.Error(), "a frame of length 0");
}

TEST(FrameReader, AnUnknownTypeIsAnErrorBeforeItsBodyIsCollected) {
  for (const int type : {0, 10, 77, 255}) {
    FrameReader reader;
    reader.Feed(Header(100, static_cast<std::uint8_t>(type)));
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.Error(), "a frame of unknown type " + std::to_string(type));
  }
}

TEST(FrameReader, AHugeLengthIsAnErrorAndNothingIsKeptForIt) {
  FrameReader reader;
  reader.Feed(Header(0xFFFFFFFF, static_cast<std::uint8_t>(FrameType::Request)));
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.Error(), "a frame of 4294967295 bytes is too long");
  EXPECT_EQ(reader.BufferedBytes(), 0u);
}

TEST(FrameReader, TheLongestFramesAreTakenAndOneByteMoreIsNot) {
  const struct {
    FrameType type;
    std::size_t longest;
  } kinds[] = {{FrameType::Data, kDataFrameBytesMax}, {FrameType::Response, kControlFrameBytesMax}};
  for (const auto& kind : kinds) {
    FrameReader good, bad;
    good.Feed(EncodeFrame(kind.type, std::string(kind.longest - 1, 'x')));
    const auto frame = good.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->body.size(), kind.longest - 1);
    bad.Feed(EncodeFrame(kind.type, std::string(kind.longest, 'x')));
    EXPECT_FALSE(bad.Next());
    EXPECT_NE(bad.Error(), "");
  }
}

TEST(FrameReader, ALimitHoldsUntilItIsLifted) {
  FrameReader reader;
  reader.Limit(100);
  reader.Feed(EncodeFrame(FrameType::Hello, std::string(99, 'x')));
  EXPECT_TRUE(reader.Next());
  reader.Limit(kControlFrameBytesMax);
  reader.Feed(EncodeFrame(FrameType::Request, std::string(1000, 'x')));
  EXPECT_TRUE(reader.Next());
  reader.Limit(100);
  reader.Feed(EncodeFrame(FrameType::Request, std::string(100, 'x')));
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.Error(), "a frame of 101 bytes is too long");
}

TEST(FrameReader, AfterAnErrorNothingMoreComesAndNothingMoreIsKept) {
  FrameReader reader;
  reader.Feed(Header(0, 0));
  EXPECT_FALSE(reader.Next());
  reader.Feed(EncodeFrame(FrameType::Request, std::string("good")));
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.BufferedBytes(), 0u);
}

TEST(FrameReader, ATruncatedFrameWaitsForMore) {
  const auto frame = EncodeFrame(FrameType::Request, std::string("body"));
  for (std::size_t bytes = 0; bytes < frame.size(); ++bytes) {
    FrameReader reader;
    reader.Feed(Bytes(frame).first(bytes));
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.Error(), "");
  }
}

TEST(FrameReader, PiecesThatNeverEndWithAFrameDoNotMakeItGrow) {
  FrameReader reader;
  const auto frame = EncodeFrame(FrameType::Data, std::string(60000, 'x'));
  reader.Feed(Bytes(frame).first(100));
  for (int i = 0; i < 2000; ++i) {
    // The end of one frame and the beginning of the next, as a socket gives them.
    std::vector<std::uint8_t> piece(frame.begin() + 100, frame.end());
    piece.insert(piece.end(), frame.begin(), frame.begin() + 100);
    reader.Feed(piece);
    ASSERT_TRUE(reader.Next());
    ASSERT_FALSE(reader.Next());
    ASSERT_EQ(reader.BufferedBytes(), 100u);
  }
}

TEST(EncodeFrame, LengthTypeAndBodyStandAsTheyAreRead) {
  const auto frame = EncodeFrame(FrameType::Refused, std::string("no"));
  EXPECT_EQ(frame, (std::vector<std::uint8_t>{0, 0, 0, 3, 3, 'n', 'o'}));
  EXPECT_EQ(EncodeFrameHeader(FrameType::Data, 0x010203),
            (std::vector<std::uint8_t>{0, 1, 2, 4, 6}));
}

TEST(ReadDataBody, NamesAndTracesComeInTheirOrder) {
  const std::string body = Body();
  HeardData heard;
  std::string why;
  EXPECT_TRUE(ReadDataBody(Of(body), heard, &why));
  EXPECT_EQ(heard.words,
            "name 7 web\n"
            "trace of 46 up\n"
            "name 8 db\n"
            "trace of 48 \n");
}

TEST(ReadDataBody, AnEmptyBodyHoldsNothingAndIsGood) {
  HeardData heard;
  EXPECT_TRUE(ReadDataBody({}, heard, nullptr));
  EXPECT_EQ(heard.words, "");
}

TEST(ReadDataBody, ABodyCutAnywhereIsRefusedAndNothingOfItIsCalledBack) {
  const std::string body = Body();
  HeardData whole;
  ASSERT_TRUE(ReadDataBody(Of(body), whole, nullptr));
  int good = 0;
  for (std::size_t bytes = 1; bytes < body.size(); ++bytes) {
    HeardData heard;
    std::string why;
    // An exact copy, so that a sanitizer sees a read beyond the end.
    const std::vector<std::uint8_t> cut(body.begin(),
                                        body.begin() + static_cast<std::ptrdiff_t>(bytes));
    if (ReadDataBody(cut, heard, &why)) {
      ++good;  // at the end of a record
      EXPECT_EQ(whole.words.rfind(heard.words, 0), 0u);
    } else {
      EXPECT_EQ(heard.words, "");
      EXPECT_EQ(why, "a record is cut short");
    }
  }
  EXPECT_EQ(good, 3);
}

TEST(ReadDataBody, AnUnknownTagRefusesTheWholeBody) {
  const std::string body = TrcImage("").Name(7, "web").Raw(12).Trace("up").Bytes();
  HeardData heard;
  std::string why;
  EXPECT_FALSE(ReadDataBody(Of(body), heard, &why));
  EXPECT_EQ(why, "a record of unknown kind 12");
  EXPECT_EQ(heard.words, "");
}

TEST(ReadDataBody, ANameEndsAtItsFirstNul) {
  const std::string body = TrcImage("").Name(7, std::string_view("web\0x", 5)).Bytes();
  HeardData heard;
  EXPECT_TRUE(ReadDataBody(Of(body), heard, nullptr));
  EXPECT_EQ(heard.words, "name 7 web\n");
}

}  // namespace
