// Converting a trace file of the older format, compared with copying it: the same bytes read and
// written.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "base/mapped_file.h"
#include "bench/ratio.h"
#include "bench/sample_file.h"
#include "records/old_conversion.h"

namespace {

constexpr int kTurns = 5;

// Both write to a file of their own that is made again each time.
void Copy(const std::string& from, const std::string& to, std::size_t block) {
  const int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
  const int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  std::vector<char> buffer(block);
  for (ssize_t got; (got = read(in, buffer.data(), buffer.size())) > 0;) {
    if (write(out, buffer.data(), static_cast<std::size_t>(got)) != got) std::exit(2);
  }
  close(in);
  close(out);
}

std::uint64_t Convert(const std::string& from, const std::string& to) {
  const auto old = MappedFile::Open(from);
  TrcWriter writer(TrcWriter::kBlockBytes);
  if (!old || !writer.Create(to)) std::exit(2);
  const OldConversion result = ConvertOldTrc(old->View(), writer, [](auto) { return true; });
  if (!writer.Finish() || !result.written) std::exit(2);
  return result.traces;
}

}  // namespace

int main(int, char** argv) {
  const std::string path = SampleFile(argv[0], true);
  const std::string out = path + ".out";
  std::uint64_t traces = 0;
  const auto convert = [&] { traces = Convert(path, out); };
  const Measured copy = MeasureBeside(
      kTurns, [&] { Copy(path, out, TrcWriter::kBlockBytes); }, convert);
  PrintRow("convert an older file / copy it", copy.seconds * 1000, "ms", copy.floorSeconds * 1000,
           copy.ratio, 3.0);
  std::filesystem::remove(out);
  std::printf("%llu traces\n", static_cast<unsigned long long>(traces));
  return 0;
}
