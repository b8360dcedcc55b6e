// Requests out of bytes: what is one, where it ends, and what is refused.
#include "quor/http/request_reader.h"

#include <gtest/gtest.h>

#include "quor/http/read_requests.h"

namespace {

const std::string kStart = "POST /v1/logs HTTP/1.1\r\nHost: a\r\n";

// The same however the bytes come.
ReadRequests Read(const std::string& text, const HttpLimits& limits = {}) {
  const ReadRequests whole = ReadAll(text, text.size(), limits);
  for (const std::size_t piece : {1, 2, 3, 7, 64})
    EXPECT_EQ(ReadAll(text, piece, limits), whole) << piece << ": " << text;
  return whole;
}
int StatusOf(const std::string& text) {
  return Read(text).status;
}
std::string BodyOf(const std::string& text) {
  const ReadRequests read = Read(text);
  return read.requests.size() == 1 ? read.requests[0].body
                                   : "status " + std::to_string(read.status);
}
std::string Chunked(const std::string& pieces) {
  return kStart + "Transfer-Encoding: chunked\r\n\r\n" + pieces;
}

TEST(HttpRequestReader, ABodyHasALengthOrChunks) {
  EXPECT_EQ(BodyOf(kStart + "Content-Length: 5\r\n\r\nhello"), "hello");
  EXPECT_EQ(BodyOf(kStart + "\r\n"), "");
  EXPECT_EQ(BodyOf(Chunked("5\r\nhello\r\n00A;x=\"y\" ; z\r\n 123456789\r\n0\r\n\r\n")),
            "hello 123456789");
  EXPECT_EQ(BodyOf(Chunked("2\r\n\r\n\r\n0;last\r\nDigest: x\r\nOther: y\r\n\r\n")), "\r\n");
}

TEST(HttpRequestReader, OneRequestFollowsAnotherInTheSameBytes) {
  const ReadRequests read =
      Read(kStart + "Content-Length: 2\r\n\r\nab" + "\r\n" + Chunked("1\r\nc\r\n0\r\n\r\n") +
           kStart + "Connection: close\r\n\r\n");
  ASSERT_EQ(read.requests.size(), 3u);
  EXPECT_EQ(read.requests[0], (ReadRequest{"POST", "/v1/logs", "ab", true}));
  EXPECT_EQ(read.requests[1], (ReadRequest{"POST", "/v1/logs", "c", true}));
  EXPECT_EQ(read.requests[2], (ReadRequest{"POST", "/v1/logs", "", false}));
  EXPECT_TRUE(read.isIdle);
}

TEST(HttpRequestReader, AnOldPeerSaysThatItStays) {
  EXPECT_FALSE(Read("GET / HTTP/1.0\r\n\r\n").requests.at(0).keepsAlive);
  EXPECT_TRUE(
      Read("GET / HTTP/1.0\r\nConnection: x, Keep-Alive\r\n\r\n").requests.at(0).keepsAlive);
  EXPECT_FALSE(Read(kStart + "Connection: a,b , CLOSE\r\n\r\n").requests.at(0).keepsAlive);
}

TEST(HttpRequestReader, WhatTwoProgramsCouldReadInTwoWaysIsRefused) {
  const std::string length = "Content-Length: 5\r\n";
  EXPECT_EQ(StatusOf(kStart + length + "Transfer-Encoding: chunked\r\n\r\nhello"), 400);
  EXPECT_EQ(StatusOf(kStart + length + length + "\r\nhello"), 400);
  for (const std::string wrong : {"5, 5", "+5", "-5", "0x5", "5 5", "", "99999999999999999999999"})
    EXPECT_EQ(StatusOf(kStart + "Content-Length: " + wrong + "\r\n\r\nhello"), 400) << wrong;
  for (const std::string coding : {"gzip, chunked", "identity", "chunked, chunked", "\"chunked\""})
    EXPECT_EQ(StatusOf(kStart + "Transfer-Encoding: " + coding + "\r\n\r\n0\r\n\r\n"), 501)
        << coding;
  const std::string twice = "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n";
  EXPECT_EQ(StatusOf(kStart + twice + "\r\n0\r\n\r\n"), 501);
  EXPECT_EQ(StatusOf("POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"), 400);
  EXPECT_EQ(StatusOf(kStart + "Content-Length : 5\r\n\r\nhello"), 400);
  EXPECT_EQ(StatusOf(kStart + "A: b\r\n Content-Length: 5\r\n\r\nhello"), 400);
  EXPECT_EQ(StatusOf(kStart + "A: b\nContent-Length: 5\r\n\r\nhello"), 400);
  EXPECT_EQ(StatusOf(kStart + std::string("A: b\0c\r\n\r\n", 10)), 400);
  EXPECT_EQ(StatusOf(kStart + "A: b\rc\r\n\r\n"), 400);
  EXPECT_EQ(StatusOf(kStart + ": b\r\n\r\n"), 400);
  EXPECT_EQ(StatusOf(kStart + "Host: b\r\n\r\n"), 400);
  EXPECT_EQ(StatusOf("POST / HTTP/1.1\r\n\r\n"), 400);
}

TEST(HttpRequestReader, AMalformedChunkIsRefused) {
  for (const std::string pieces :
       {"\r\n", "-1\r\n", "0x1\r\na\r\n", "g\r\n", " 1\r\na\r\n", "1\na\r\n", "1 a\r\na\r\n",
        "1\r\nab\r\n", "1\r\na\n", "0\r\nno trailer\r\n\r\n", "0\r\n continued: x\r\n\r\n"})
    EXPECT_EQ(StatusOf(Chunked(pieces)), 400) << pieces;
  EXPECT_EQ(StatusOf(Chunked("1;\x01\r\na\r\n")), 400);
}

TEST(HttpRequestReader, WhatIsTooLongIsRefusedBeforeItHasCome) {
  HttpLimits limits;
  limits.bodyBytes = 10;
  limits.headBytes = 100;
  limits.headerLines = 3;
  EXPECT_EQ(Read(kStart + "Content-Length: 10\r\n\r\n0123456789", limits).requests.size(), 1u);
  EXPECT_EQ(Read(kStart + "Content-Length: 11\r\n\r\n", limits).status, 413);
  EXPECT_EQ(Read(Chunked("A\r\n0123456789\r\n0\r\n\r\n"), limits).requests.size(), 1u);
  EXPECT_EQ(Read(Chunked("B\r\n"), limits).status, 413);
  EXPECT_EQ(Read(Chunked("9\r\n012345678\r\n2\r\n"), limits).status, 413);
  EXPECT_EQ(Read(Chunked("FFFFFFFFFFFFFFFFF\r\n"), limits).status, 413);
  EXPECT_EQ(Read(kStart + "A: b\r\nC: d\r\nE: f\r\n\r\n", limits).status, 431);
  EXPECT_EQ(Read(kStart + "A: " + std::string(100, 'b'), limits).status, 431);
}

TEST(HttpRequestReader, BetweenThePiecesThereIsABoundToo) {
  EXPECT_EQ(StatusOf(Chunked("1;" + std::string(ChunkedBody::kLineBytesMax, 'x'))), 413);
  std::string trailer;
  for (int i = 0; i < 20; ++i) trailer += "A: " + std::string(500, 'x') + "\r\n";
  EXPECT_EQ(StatusOf(Chunked("0\r\n" + trailer)), 413);
  std::string pieces;
  for (int i = 0; i < 9000; ++i) pieces += "1;" + std::string(1000, 'x') + "\r\na\r\n";
  EXPECT_EQ(ReadAll(Chunked(pieces), 4096).status, 413);
}

TEST(HttpRequestReader, OnlyRequestsOfThisProtocolAreRead) {
  EXPECT_EQ(StatusOf("GET / HTTP/2.0\r\nHost: a\r\n\r\n"), 505);
  EXPECT_EQ(StatusOf("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"), 505);
  for (const std::string line :
       {"GET /", "GET  HTTP/1.1", "GET / http/1.1", "GET http://a/ HTTP/1.1", "GET / / HTTP/1.1",
        "G{T / HTTP/1.1", "* * *", " GET / HTTP/1.1", "GET /\x7F HTTP/1.1", ""})
    EXPECT_EQ(StatusOf(line + "\r\nHost: a\r\n\r\n"), 400) << line;
  EXPECT_EQ(StatusOf("\x16\x03\x01\x02\r\n\r\n"), 400);
}

TEST(HttpRequestReader, APeerThatWaitsForItsTurnIsKnownAtTheHead) {
  HttpRequestReader reader;
  const std::string head = kStart + "Expect: 100-Continue\r\nContent-Length: 2\r\n\r\n";
  const std::string text = head + "ab";
  EXPECT_EQ(reader.Feed(BytesOf(text)), head.size());
  EXPECT_EQ(reader.Now(), HttpRequestReader::State::Body);
  EXPECT_TRUE(reader.Request().awaitsContinue);
  EXPECT_EQ(reader.Feed(BytesOf("ab")), 2u);
  EXPECT_EQ(reader.Now(), HttpRequestReader::State::Complete);
  EXPECT_EQ(reader.Feed(BytesOf("ab")), 0u);
  EXPECT_EQ(StatusOf(kStart + "Expect: tea\r\n\r\n"), 417);
  EXPECT_EQ(StatusOf("GET / HTTP/1.0\r\nExpect: tea\r\n\r\n"), 0);
}

}  // namespace
