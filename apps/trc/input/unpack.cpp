#include "input/unpack.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "base/fail_with.h"
#include "terminal/interrupt.h"

namespace {

constexpr std::size_t kPieceBytes = 256 * 1024;
constexpr int kLookMs = 100;

// The bytes of a descriptor in pieces. Waits in a way that an interrupt ends.
class Source {
 public:
  explicit Source(int descriptor) : m_descriptor(descriptor), m_bytes(kPieceBytes) {}

  // The next piece; empty at the end, and after an error or an interrupt.
  std::string_view Next() {
    while (!Interrupted()) {
      pollfd ready{m_descriptor, POLLIN, 0};
      if (poll(&ready, 1, kLookMs) <= 0) continue;
      const ssize_t count = read(m_descriptor, m_bytes.data(), m_bytes.size());
      if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
      if (count < 0) m_error = errno;
      if (count <= 0) return {};
      return {m_bytes.data(), static_cast<std::size_t>(count)};
    }
    return {};
  }
  // At least `count` bytes, unless there are fewer.
  std::string Begin(std::size_t count) {
    std::string begin;
    while (begin.size() < count) {
      const std::string_view piece = Next();
      if (piece.empty()) break;
      begin += piece;
    }
    return begin;
  }
  int Error() const { return m_error; }

 private:
  const int m_descriptor;
  std::vector<char> m_bytes;
  int m_error = 0;
};

// Lets a trace file through to the private file, and nothing else.
class TraceSink {
 public:
  explicit TraceSink(PrivateFile& file) : m_file(file) {}

  bool Append(const void* bytes, std::size_t count, std::string* why) {
    const auto* const begin = static_cast<const std::uint8_t*>(bytes);
    if (m_begin.size() < kTrcHeaderBytes) {
      m_begin.insert(m_begin.end(), begin,
                     begin + std::min(count, kTrcHeaderBytes - m_begin.size()));
      if (m_begin.size() == kTrcHeaderBytes && VersionOf(m_begin) == TrcVersion::Unknown)
        return FailWith(why, "Invalid format.");
    }
    return m_file.Append(bytes, count, why);
  }

 private:
  PrivateFile& m_file;
  std::vector<std::uint8_t> m_begin;
};

// Unpacks piece by piece.
class Unpacker {
 public:
  virtual ~Unpacker() = default;
  enum class Step { Good, Bad, Refused };
  virtual Step Take(std::string_view piece, TraceSink& to, std::string* why) = 0;
  // May the input end here?
  virtual bool IsWhole() const = 0;
};

class PlainUnpacker final : public Unpacker {
 public:
  Step Take(std::string_view piece, TraceSink& to, std::string* why) override {
    return to.Append(piece.data(), piece.size(), why) ? Step::Good : Step::Refused;
  }
  bool IsWhole() const override { return true; }
};

class GzipUnpacker final : public Unpacker {
 public:
  GzipUnpacker() : m_out(kPieceBytes) {
    constexpr int kGzipOnly = 15 + 16;
    m_ready = inflateInit2(&m_stream, kGzipOnly) == Z_OK;
  }
  ~GzipUnpacker() override {
    if (m_ready) inflateEnd(&m_stream);
  }
  Step Take(std::string_view piece, TraceSink& to, std::string* why) override {
    if (!m_ready) return FailWith(why, "no memory to unpack it", Step::Bad);
    m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    m_stream.avail_in = static_cast<uInt>(piece.size());
    do {
      // Another part follows.
      if (m_whole && m_stream.avail_in > 0 && inflateReset(&m_stream) == Z_OK) m_whole = false;
      m_stream.next_out = m_out.data();
      m_stream.avail_out = static_cast<uInt>(m_out.size());
      const int result = inflate(&m_stream, Z_NO_FLUSH);
      const std::size_t count = m_out.size() - m_stream.avail_out;
      if (count > 0 && !to.Append(m_out.data(), count, why)) return Step::Refused;
      m_whole = result == Z_STREAM_END;
      if (Interrupted()) return Step::Good;  // a piece may unpack to gigabytes
      if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
        return FailWith(why, m_stream.msg ? m_stream.msg : "no gzip data", Step::Bad);
    } while (m_stream.avail_in > 0 || (m_stream.avail_out == 0 && !m_whole));
    return Step::Good;
  }
  bool IsWhole() const override { return m_whole; }

 private:
  z_stream m_stream = {};
  std::vector<Bytef> m_out;
  bool m_ready = false, m_whole = false;
};

class ZstdUnpacker final : public Unpacker {
 public:
  // Its window is bounded by the library, so that a frame cannot ask for any memory.
  ZstdUnpacker() : m_stream(ZSTD_createDStream(), ZSTD_freeDStream), m_out(ZSTD_DStreamOutSize()) {}
  Step Take(std::string_view piece, TraceSink& to, std::string* why) override {
    if (!m_stream) return FailWith(why, "no memory to unpack it", Step::Bad);
    ZSTD_inBuffer in{piece.data(), piece.size(), 0};
    for (bool more = true; more || in.pos < in.size;) {
      ZSTD_outBuffer out{m_out.data(), m_out.size(), 0};
      const std::size_t left = ZSTD_decompressStream(m_stream.get(), &out, &in);
      if (ZSTD_isError(left)) return FailWith(why, ZSTD_getErrorName(left), Step::Bad);
      if (out.pos > 0 && !to.Append(m_out.data(), out.pos, why)) return Step::Refused;
      m_whole = left == 0;
      if (Interrupted()) return Step::Good;  // a piece may unpack to gigabytes
      more = out.pos == m_out.size() && !m_whole;
    }
    return Step::Good;
  }
  bool IsWhole() const override { return m_whole; }

 private:
  std::unique_ptr<ZSTD_DStream, std::size_t (*)(ZSTD_DStream*)> m_stream;
  std::vector<char> m_out;
  bool m_whole = false;
};

std::unique_ptr<Unpacker> UnpackerOf(PackedAs packing) {
  if (packing == PackedAs::Gzip) return std::make_unique<GzipUnpacker>();
  if (packing == PackedAs::Zstd) return std::make_unique<ZstdUnpacker>();
  return std::make_unique<PlainUnpacker>();
}

UnpackResult CutOrFailed(const PrivateFile& to, std::string* why, const std::string& reason) {
  const bool any = to.Size() > 0;
  return FailWith(why, reason + (any ? "; what was unpacked before that is given" : ""),
                  any ? UnpackResult::Cut : UnpackResult::Failed);
}

}  // namespace

PackedAs PackingOf(std::string_view begin) {
  if (begin.starts_with("\x1f\x8b")) return PackedAs::Gzip;
  // Programs that pack in parallel begin with a frame that says how long the next one is.
  const bool isOtherFrame =
      begin.size() >= 4 && (begin[0] & 0xF0) == 0x50 && begin.substr(1, 3) == "\x2a\x4d\x18";
  if (begin.starts_with("\x28\xb5\x2f\xfd") || isOtherFrame) return PackedAs::Zstd;
  return PackedAs::Plain;
}

UnpackResult CopyUnpacked(int from, PrivateFile& to, std::string* why, std::uint64_t bytesMax) {
  constexpr std::size_t kMagicBytes = 4;
  if (!to.Create(why)) return UnpackResult::Failed;
  Source source(from);
  TraceSink sink(to);
  const std::string begin = source.Begin(kMagicBytes);
  const std::unique_ptr<Unpacker> unpacker = UnpackerOf(PackingOf(begin));
  std::uint64_t taken = 0;
  for (std::string_view piece = begin; !piece.empty(); piece = source.Next()) {
    if (to.Size() >= bytesMax) return FailWith(why, "it is too long", UnpackResult::Cut);
    taken += piece.size();
    std::string reason;
    switch (unpacker->Take(piece, sink, &reason)) {
      case Unpacker::Step::Good:
        break;
      case Unpacker::Step::Refused:
        return FailWith(why, reason, UnpackResult::Failed);
      case Unpacker::Step::Bad:
        return CutOrFailed(
            to, why,
            "the archive is damaged before byte " + std::to_string(taken) + " (" + reason + ")");
    }
  }
  if (Interrupted()) return UnpackResult::Failed;
  if (source.Error() != 0) return CutOrFailed(to, why, strerror(source.Error()));
  if (to.Size() == 0 && unpacker->IsWhole())
    return FailWith(why, "The file is empty", UnpackResult::Failed);
  if (!unpacker->IsWhole()) return CutOrFailed(to, why, "the archive is cut");
  return UnpackResult::Whole;
}
