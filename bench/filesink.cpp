// The file sink from end to end: from the trace point to bytes in the file, for every trace. The
// floor is a loop that reads the clock, copies a record of the same size and writes once per 64
// KiB.
#include <fcntl.h>
#include <time.h>

#include <cstring>
#include <filesystem>

#include "bench/ratio.h"
#include "bench/ring_end.h"
#include "quor/quor.hpp"

namespace {

constexpr int kTraces = 400'000;
constexpr int kFlushTraces = 50'000;
constexpr int kTurns = 9;
constexpr std::size_t kTextBytes = 100;
constexpr std::size_t kRecordBytes = kTagBytes + kTraceFixedBytes + kTextBytes;

QUOR_POINT(bench_point, "Bench", "File");

void FloorRun(const std::string& path, std::size_t batch, int traces) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  std::vector<char> buffer(batch + kRecordBytes);
  char record[kRecordBytes] = {};
  std::size_t used = 0;
  const auto push = [&] {
    if (write(file, buffer.data(), used) != static_cast<ssize_t>(used)) std::exit(2);
    used = 0;
  };
  for (int i = 0; i < traces; ++i) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::memcpy(record, &now, sizeof now);
    std::memcpy(buffer.data() + used, record, sizeof record);
    used += sizeof record;
    if (used >= batch) push();
  }
  push();
  close(file);
}

// The ring has room for 45,000 of these traces. A burst that is faster than the writer waits for
// it, because every trace must arrive.
void SinkRun(const std::string& text, int traces) {
  for (int i = 0; i < traces; ++i) {
    quor_trace(&bench_point, QUOR_INFO, __FILE__, __LINE__, text.data(), text.size());
    if (i % 16384 == 16383) quor_flush(10000);
  }
  quor_flush(10000);
}

void Measure(RingEnd& end, const char* what, const char* options, std::size_t batch, int traces) {
  const std::string folder = end.Folder(), text(kTextBytes, 'x');
  end.SendSink({SinkKind::File, folder + "/sink.trc", options});
  end.Await(LinkType::Taker);
  const Measured sink = MeasureBeside(
      kTurns, [&] { FloorRun(folder + "/floor.bin", batch, traces); },
      [&] { SinkRun(text, traces); });
  PrintRow(what, sink.seconds * 1e9 / traces, "ns", sink.floorSeconds * 1e9 / traces, sink.ratio,
           1.5);
  end.SendSink({SinkKind::Socket, "localhost", ""});
  end.Await(LinkType::Taker);
  for (const auto& file : std::filesystem::directory_iterator(folder))
    if (file.path().extension() != ".sock") std::filesystem::remove(file.path());
}

}  // namespace

int main() {
  RingEnd end;
  quor_application("bench");
  end.Take();
  Measure(end, "file sink, flush=0", "flush=0;maxfiles=1;maxsize=1000;", 64 * 1024, kTraces);
  Measure(end, "file sink, flush=1 (a write per trace)", "flush=1;maxfiles=1;maxsize=1000;", 1,
          kFlushTraces);
  quor_counts counts{};
  quor_get_counts(&counts);
  std::printf("  traced %llu, lost %llu\n", static_cast<unsigned long long>(counts.traced),
              static_cast<unsigned long long>(counts.lost));
  return counts.lost == 0 ? 0 : 1;
}
