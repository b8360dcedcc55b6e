// Packed bodies, whole and damaged, and the bytes of answers.
#include "quor/http/unpack.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "quor/http/answer.h"
#include "quor/http/read_requests.h"

namespace {

std::string Packed(const std::string& text, int form) {
  z_stream state{};
  EXPECT_EQ(deflateInit2(&state, 6, Z_DEFLATED, form, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string packed(deflateBound(&state, text.size()) + 64, '\0');
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  state.avail_in = static_cast<uInt>(text.size());
  state.next_out = reinterpret_cast<Bytef*>(packed.data());
  state.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
  packed.resize(state.total_out);
  deflateEnd(&state);
  return packed;
}
std::string Gzip(const std::string& text) {
  return Packed(text, 31);
}

struct Unpacked {
  Unpacking result;
  std::string text;
  bool operator==(const Unpacked&) const = default;
};
Unpacked Undo(const std::string& packed, BodyCoding coding = BodyCoding::Gzip,
              std::size_t most = 4u << 20) {
  std::vector<std::uint8_t> bytes;
  std::string why;
  const Unpacking result = Unpack(coding, BytesOf(packed), most, bytes, &why);
  EXPECT_EQ(why.empty(), result == Unpacking::Done);
  if (result != Unpacking::Done) return {result, ""};
  return {result, {bytes.begin(), bytes.end()}};
}

TEST(Unpack, GivesBackWhatWasPacked) {
  const std::string text(200'000, 'x');
  EXPECT_EQ(Undo(Gzip(text)), (Unpacked{Unpacking::Done, text}));
  EXPECT_EQ(Undo(Gzip("")), (Unpacked{Unpacking::Done, ""}));
  EXPECT_EQ(Undo(Gzip("one ") + Gzip("") + Gzip("two")), (Unpacked{Unpacking::Done, "one two"}));
  EXPECT_EQ(Undo(Packed(text, 15), BodyCoding::Zlib), (Unpacked{Unpacking::Done, text}));
}

TEST(Unpack, HoldsItsBoundToTheByte) {
  const std::string text(100'000, 'x');
  EXPECT_EQ(Undo(Gzip(text), BodyCoding::Gzip, 100'000), (Unpacked{Unpacking::Done, text}));
  EXPECT_EQ(Undo(Gzip(text), BodyCoding::Gzip, 99'999).result, Unpacking::TooLong);
  EXPECT_EQ(Undo(Gzip(text) + Gzip("y"), BodyCoding::Gzip, 100'000).result, Unpacking::TooLong);
  EXPECT_EQ(Undo(Gzip(std::string(64u << 20, '\0'))).result, Unpacking::TooLong);
}

TEST(Unpack, DamagedBytesAreMalformed) {
  const std::string packed = Gzip("some text that is packed");
  for (std::size_t size = 0; size < packed.size(); ++size)
    EXPECT_EQ(Undo(packed.substr(0, size)).result, Unpacking::Malformed) << size;
  std::string wrongSum = packed;
  wrongSum[wrongSum.size() - 6] ^= 1;
  EXPECT_EQ(Undo(wrongSum).result, Unpacking::Malformed);
  EXPECT_EQ(Undo(packed + "x").result, Unpacking::Malformed);
  EXPECT_EQ(Undo(Packed("a", 15) + "x", BodyCoding::Zlib).result, Unpacking::Malformed);
  EXPECT_EQ(Undo(packed, BodyCoding::Zlib).result, Unpacking::Malformed);
  EXPECT_EQ(Undo("plain text").result, Unpacking::Malformed);
}

TEST(Unpack, KnowsTheWordsOfCodings) {
  EXPECT_EQ(BodyCodingOf(""), BodyCoding::Plain);
  EXPECT_EQ(BodyCodingOf("Identity"), BodyCoding::Plain);
  EXPECT_EQ(BodyCodingOf(" GZIP "), BodyCoding::Gzip);
  EXPECT_EQ(BodyCodingOf("deflate"), BodyCoding::Zlib);
  EXPECT_EQ(BodyCodingOf("gzip, gzip"), BodyCoding::Unknown);
  EXPECT_EQ(BodyCodingOf("br"), BodyCoding::Unknown);
}

TEST(HttpAnswer, SaysItsLengthAndWhetherItIsTheLast) {
  EXPECT_EQ(WriteAnswer({200, "application/x-protobuf", "ab"}, 784111777),
            "HTTP/1.1 200 OK\r\nDate: Sun, 06 Nov 1994 08:49:37 GMT\r\n"
            "Content-Type: application/x-protobuf\r\nContent-Length: 2\r\n\r\nab");
  EXPECT_EQ(WriteAnswer({503, "", "", "Retry-After: 2\r\n", true}, 0),
            "HTTP/1.1 503 Service Unavailable\r\nDate: Thu, 01 Jan 1970 00:00:00 GMT\r\n"
            "Retry-After: 2\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
  const std::string toHead = WriteAnswer({405, "text/plain", "no", "", false, true}, 0);
  EXPECT_NE(toHead.find("Content-Length: 2\r\n\r\n"), std::string::npos);
  EXPECT_TRUE(toHead.ends_with("\r\n\r\n"));
}

}  // namespace
