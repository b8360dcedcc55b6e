// Answers as they come, in pieces of any size, and such that nobody may believe.
#include "quor/http/client/response_reader.h"

#include <gmock/gmock.h>

#include "quor/http/client/pack.h"
#include "quor/http/client/web_address.h"
#include "quor/http/unpack.h"

namespace {

using State = HttpResponseReader::State;

Bytes Of(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Whole, or byte by byte.
HttpResponseReader Read(const std::string& text, std::size_t piece) {
  HttpResponseReader reader;
  for (std::size_t at = 0; at < text.size();) {
    const std::string part = text.substr(at, piece);
    const std::size_t used = reader.Feed(Of(part));
    at += used;
    if (used < part.size()) break;
  }
  return reader;
}

std::string BodyOf(HttpResponseReader& reader) {
  const auto& body = reader.Response().body;
  return {body.begin(), body.end()};
}

class ResponseReader : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Pieces, ResponseReader, testing::Values(1, 2, 7, 100'000));

TEST_P(ResponseReader, ReadsAnAnswerWithALength) {
  auto reader = Read(
      "HTTP/1.1 429 Too Many\r\nRetry-After: 7\r\ncontent-TYPE: a/b\r\nContent-Length: "
      "3\r\n\r\nabc",
      GetParam());
  ASSERT_EQ(reader.Now(), State::Complete) << reader.Why();
  EXPECT_EQ(reader.Response().status, 429);
  EXPECT_EQ(reader.Response().retryAfter, "7");
  EXPECT_EQ(reader.Response().contentType, "a/b");
  EXPECT_EQ(BodyOf(reader), "abc");
  EXPECT_TRUE(reader.Response().keepsAlive);
}

TEST_P(ResponseReader, ReadsAnAnswerInChunksAndSkipsInterimOnes) {
  auto reader = Read(
      "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200\r\nTransfer-Encoding: chunked\r\n"
      "Connection: close\r\n\r\n2\r\nab\r\n1;x\r\nc\r\n0\r\n\r\n",
      GetParam());
  ASSERT_EQ(reader.Now(), State::Complete) << reader.Why();
  EXPECT_EQ(reader.Response().status, 200);
  EXPECT_EQ(BodyOf(reader), "abc");
  EXPECT_FALSE(reader.Response().keepsAlive);
}

TEST_P(ResponseReader, ABodyWithoutALengthEndsWithTheConnection) {
  auto reader = Read("HTTP/1.1 200 OK\r\n\r\nabc", GetParam());
  EXPECT_EQ(reader.Now(), State::Body);
  reader.End();
  ASSERT_EQ(reader.Now(), State::Complete);
  EXPECT_EQ(BodyOf(reader), "abc");
  EXPECT_FALSE(reader.Response().keepsAlive);
}

TEST_P(ResponseReader, AnAnswerThatIsCutIsNone) {
  for (const char* const text : {"", "HTT", "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nabc",
                                 "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nab"}) {
    auto reader = Read(text, GetParam());
    EXPECT_NE(reader.Now(), State::Complete) << text;
    reader.End();
    EXPECT_EQ(reader.Now(), State::Failed) << text;
  }
}

TEST_P(ResponseReader, WhatTwoProgramsCouldReadInTwoWaysIsRefused) {
  for (const char* const text : {
           "HELO 200 OK\r\n\r\n",
           "HTTP/2.0 200 OK\r\n\r\n",
           "HTTP/1.1 2x0 OK\r\n\r\n",
           "HTTP/1.1 2000 OK\r\n\r\n",
           "HTTP/1.1 999 OK\r\n\r\n",
           "HTTP/1.1 101 Switching\r\n\r\n",
           "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab",
           "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n",
           "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999999\r\n\r\n",
           "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n",
           "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n",
           "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
           "HTTP/1.1 200 OK\r\nno colon\r\n\r\n",
       }) {
    auto reader = Read(text, GetParam());
    EXPECT_EQ(reader.Now(), State::Failed) << text;
    EXPECT_NE(reader.Why(), "") << text;
  }
}

TEST_P(ResponseReader, EndlessHeadsAndInterimAnswersEnd) {
  std::string endless = "HTTP/1.1 200 OK\r\n";
  while (endless.size() < 40'000) endless += "X: y\r\n";
  EXPECT_EQ(Read(endless, GetParam()).Now(), State::Failed);
  EXPECT_EQ(Read(std::string(40'000, 'x'), GetParam()).Now(), State::Failed);
  std::string interim;
  for (int i = 0; i < 100; ++i) interim += "HTTP/1.1 102 Wait\r\n\r\n";
  EXPECT_EQ(Read(interim, GetParam()).Now(), State::Failed);
}

TEST_P(ResponseReader, ALongBodyIsCutAndTheAnswerCounts) {
  for (const char* const length :
       {"Content-Length: 200000\r\n", "", "Transfer-Encoding: chunked\r\n"}) {
    std::string text = std::string("HTTP/1.1 400 No\r\n") + length + "\r\n";
    if (std::string(length).starts_with("T")) text += "30000\r\n";
    text += std::string(200'000, 'x');
    auto reader = Read(text, GetParam());
    ASSERT_EQ(reader.Now(), State::Complete) << length;
    EXPECT_EQ(reader.Response().status, 400);
    EXPECT_LE(reader.Response().body.size(), HttpResponseReader::kBodyBytesMax);
    EXPECT_FALSE(reader.Response().keepsAlive);
  }
}

TEST(ResponseReaderOnce, WhatFollowsAnAnswerIsNotRead) {
  HttpResponseReader reader;
  const std::string text = "HTTP/1.1 204 No\r\n\r\nHTTP/1.1 500 Lie\r\n\r\n";
  EXPECT_EQ(reader.Feed(Of(text)), text.find("HTTP/1.1 500"));
  EXPECT_EQ(reader.Now(), State::Complete);
  EXPECT_EQ(reader.Response().status, 204);
}

TEST(WebAddress, IsReadWithHostPortAndPath) {
  std::string why;
  const auto plain = ReadWebAddress("http://collector", 4318, &why);
  ASSERT_TRUE(plain) << why;
  EXPECT_EQ(plain->Authority(), "collector:4318");
  EXPECT_EQ(plain->path, "");
  EXPECT_FALSE(plain->tls);
  const auto whole = ReadWebAddress("HTTPS://[::1]:80/otlp//", 4318, &why);
  ASSERT_TRUE(whole) << why;
  EXPECT_TRUE(whole->tls);
  EXPECT_EQ(whole->host, "::1");
  EXPECT_EQ(whole->Authority(), "[::1]:80");
  EXPECT_EQ(whole->path, "/otlp");
}

TEST(WebAddress, OthersAreRefusedWithAReason) {
  for (const char* const text :
       {"collector:4318", "ftp://x", "http://", "http://:80", "http://x:", "http://x:0",
        "http://x:65536", "http://x:8a", "http://[::1", "http://[::1]x", "http://u:p@x",
        "http://x?k=v", "http://x/#y", "http://x y", "http://x\r\nEvil: 1"}) {
    std::string why;
    const auto address = ReadWebAddress(text, 4318, &why);
    EXPECT_FALSE(address) << text;
    EXPECT_NE(why, "") << text;
  }
}

TEST(PackGzip, MakesWhatIsUnpackedAgain) {
  for (const std::string& text : {std::string(), std::string("abc"), std::string(3'000'000, 'x')}) {
    const std::string packed = PackGzip(text);
    std::vector<std::uint8_t> bytes;
    std::string why;
    ASSERT_EQ(Unpack(BodyCoding::Gzip, Of(packed), 4u << 20, bytes, &why), Unpacking::Done) << why;
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), text);
  }
}

}  // namespace
