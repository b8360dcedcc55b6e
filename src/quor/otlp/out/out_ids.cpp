#include "quor/otlp/out/out_ids.h"

#include <openssl/sha.h>

#include "base/bytes.h"

namespace {

constexpr std::size_t kTraceIdBytes = 16, kSpanIdBytes = 8;

// Texts have their length before them, so that two lists of texts never have the same bytes.
class Digest {
 public:
  explicit Digest(std::string_view kind) { Add(kind); }
  Digest& Add(std::string_view text) {
    AddNumber(text.size());
    m_bytes += text;
    return *this;
  }
  Digest& AddNumber(std::uint64_t number) {
    char bytes[sizeof number];
    StoreBe64(bytes, number);
    m_bytes.append(bytes, sizeof bytes);
    return *this;
  }
  std::string First(std::size_t bytes) const {
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(m_bytes.data()), m_bytes.size(), digest);
    return {reinterpret_cast<const char*>(digest), bytes};
  }

 private:
  std::string m_bytes;
};

}  // namespace

std::string OutTraceId(std::string_view instance, std::string_view thread, std::uint64_t serial) {
  return Digest("trace").Add(instance).Add(thread).AddNumber(serial).First(kTraceIdBytes);
}

std::string OutSpanId(std::string_view instance, std::uint64_t serial) {
  return Digest("span").Add(instance).AddNumber(serial).First(kSpanIdBytes);
}

std::string OutInstanceOf(std::string_view machine, std::string_view app, std::string_view process,
                          std::uint64_t first) {
  return Digest("file").Add(machine).Add(app).Add(process).AddNumber(first).First(kTraceIdBytes);
}
