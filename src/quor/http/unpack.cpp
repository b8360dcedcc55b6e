#include "quor/http/unpack.h"

#include <zlib.h>

#include <algorithm>

#include "base/fail_with.h"
#include "quor/http/headers.h"

namespace {

// The largest window, and which of the two forms.
constexpr int kWindow = 15, kGzipForm = 16;
constexpr std::size_t kPieceBytes = 64u << 10;

class Inflater {
 public:
  explicit Inflater(int form) { m_good = inflateInit2(&m_state, kWindow + form) == Z_OK; }
  ~Inflater() {
    if (m_good) inflateEnd(&m_state);
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  bool IsGood() const { return m_good; }
  z_stream& State() { return m_state; }

 private:
  z_stream m_state{};
  bool m_good = false;
};

}  // namespace

BodyCoding BodyCodingOf(std::string_view words) {
  const std::string_view word = TrimmedBlanks(words);
  if (word.empty() || IsSameWord(word, "identity")) return BodyCoding::Plain;
  if (IsSameWord(word, "gzip") || IsSameWord(word, "x-gzip")) return BodyCoding::Gzip;
  return IsSameWord(word, "deflate") ? BodyCoding::Zlib : BodyCoding::Unknown;
}

Unpacking Unpack(BodyCoding coding, Bytes packed, std::size_t bytesMax,
                 std::vector<std::uint8_t>& bytes, std::string* why) {
  bytes.clear();
  Inflater inflater(coding == BodyCoding::Gzip ? kGzipForm : 0);
  if (!inflater.IsGood())
    return FailWith(why, "there is no memory to unpack it", Unpacking::TooLong);
  z_stream& state = inflater.State();
  // zlib reads only; its interface is older than const.
  state.next_in = const_cast<std::uint8_t*>(packed.data());
  state.avail_in = static_cast<uInt>(packed.size());
  std::size_t size = 0;
  for (;;) {
    // One byte more than may be: so a body of just that length is told from a longer one.
    if (size == bytes.size()) bytes.resize(std::min(size * 2 + kPieceBytes, bytesMax + 1));
    state.next_out = bytes.data() + size;
    state.avail_out = static_cast<uInt>(bytes.size() - size);
    const int result = inflate(&state, Z_NO_FLUSH);
    size = bytes.size() - state.avail_out;
    if (size > bytesMax) return FailWith(why, "the unpacked body is too long", Unpacking::TooLong);
    if (result == Z_STREAM_END) {
      if (state.avail_in == 0) break;
      if (coding != BodyCoding::Gzip || inflateReset(&state) != Z_OK)
        return FailWith(why, "bytes follow the packed body", Unpacking::Malformed);
    } else if (result != Z_OK || (state.avail_in == 0 && state.avail_out > 0)) {
      return FailWith(why, "the packed body is damaged or ends too early", Unpacking::Malformed);
    }
  }
  bytes.resize(size);
  return Unpacking::Done;
}
