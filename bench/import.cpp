// Importing events of Chrome's format and lines of OpenTelemetry, beside a loop that only parses
// the same bytes.
#include <sys/mman.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "bench/ratio.h"
#include "import/chrome/chrome_import.h"
#include "import/fields/import_clock.h"
#include "import/otlp/otlp_import.h"

namespace {

constexpr int kTurns = 5;
constexpr std::size_t kEvents = 100'000;
constexpr double kMostOfChrome = 3.0, kMostOfOtlp = 1.1;

// Takes every token and keeps none.
struct Tokens : nlohmann::json_sax<nlohmann::json> {
  std::size_t count = 0;

  bool null() override { return Count(); }
  bool boolean(bool) override { return Count(); }
  bool number_integer(number_integer_t) override { return Count(); }
  bool number_unsigned(number_unsigned_t) override { return Count(); }
  bool number_float(number_float_t, const string_t&) override { return Count(); }
  bool string(string_t&) override { return Count(); }
  bool binary(binary_t&) override { return Count(); }
  bool start_object(std::size_t) override { return Count(); }
  bool key(string_t&) override { return Count(); }
  bool end_object() override { return Count(); }
  bool start_array(std::size_t) override { return Count(); }
  bool end_array() override { return Count(); }
  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::detail::exception& error) override {
    std::fprintf(stderr, "%s\n", error.what());
    std::exit(2);
  }
  bool Count() { return ++count != 0; }
};

std::string ChromeText() {
  std::string json = "[";
  for (std::size_t i = 0; i < kEvents; ++i)
    json += (i == 0 ? "" : ",\n") + std::string(R"({"ph":"X","cat":"net","name":"request )") +
            std::to_string(i % 50) + R"(","pid":17,"tid":)" + std::to_string(i % 8) + R"(,"ts":)" +
            std::to_string(i * 10) + R"(.125,"dur":60.5,"args":{"rows":)" + std::to_string(i) +
            R"(,"url":"/orders/list"}})";
  return json + "]";
}

// Requests of 500 logs each, as an SDK sends them.
std::string OtlpText() {
  std::string json;
  for (std::size_t i = 0; i < kEvents; ++i) {
    if (i % 500 == 0)
      json += R"({"resourceLogs":[{"resource":{"attributes":[{"key":"service.name","value":)"
              R"({"stringValue":"shop"}}]},"scopeLogs":[{"scope":{"name":"net"},"logRecords":[)";
    json += std::string(i % 500 == 0 ? "" : ",") + R"({"timeUnixNano":")" +
            std::to_string(1'795'305'600'000'000'000 + i * 1000) +
            R"(","severityNumber":9,"body":{"stringValue":"request )" + std::to_string(i) +
            R"( took long"},"attributes":[{"key":"rows","value":{"intValue":")" +
            std::to_string(i) + R"("}}],"traceId":"0af7651916cd43dd8448eb211c80319c"})";
    if (i % 500 == 499) json += "]}]}]}\n";
  }
  return json;
}

void Parse(std::string_view bytes) {
  Tokens tokens;
  for (std::size_t at = 0; at < bytes.size();) {
    // The lines of one form are values of their own; the other is one value.
    const std::size_t end = bytes[0] == '[' ? bytes.size() : bytes.find('\n', at) + 1;
    nlohmann::json::sax_parse(bytes.begin() + at, bytes.begin() + end, &tokens);
    at = end;
  }
}

template <class Import>
void ImportOf(int descriptor, std::uint64_t expected) {
  const std::string path = "/dev/shm/bench_import." + std::to_string(getpid());
  lseek(descriptor, 0, SEEK_SET);
  LineReader reader(descriptor, [] { return true; });
  ImportClock clock({.zone = ImportZone(0), .format = ""});
  const ImportFields fields({}, clock);
  ImportParts parts(std::uint64_t{1} << 31);
  Import import(fields, parts);
  std::string why;
  const bool isDone =
      parts.Begin(path, &why) && import.Read(reader, "in", &why) && parts.Finish(&why);
  unlink(path.c_str());
  if (isDone && parts.Traces() == expected && import.IsWhole()) return;
  std::fprintf(stderr, "%s: %llu traces\n", why.c_str(),
               static_cast<unsigned long long>(parts.Traces()));
  std::exit(2);
}

template <class Import>
void Measure(const char* what, const std::string& bytes, std::uint64_t expected, double most) {
  const int file = memfd_create("events", MFD_CLOEXEC);
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t written = write(file, bytes.data() + at, bytes.size() - at);
    if (written <= 0) std::exit(2);
    at += static_cast<std::size_t>(written);
  }
  const Measured measured = MeasureBeside(
      kTurns, [&] { Parse(bytes); }, [&] { ImportOf<Import>(file, expected); });
  close(file);
  const double megabytes = static_cast<double>(bytes.size()) / 1e6;
  PrintRow(what, measured.seconds / megabytes * 1000, "ms/MB",
           measured.floorSeconds / megabytes * 1000, measured.ratio, most);
}

}  // namespace

int main() {
  Measure<ChromeImport>("import of Chrome's events, beside parsing", ChromeText(), 2 * kEvents,
                        kMostOfChrome);
  Measure<OtlpImport>("import of OpenTelemetry's logs, beside parsing", OtlpText(), kEvents,
                      kMostOfOtlp);
}
