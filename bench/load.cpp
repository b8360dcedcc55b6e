// Loading a trace file, compared with a walk that only reads lengths and ids, and with `cat`.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>

#include "base/mapped_file.h"
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "listview/rows/row_store.h"
#include "records/trc_walk.h"

namespace {

// The minimum for every reader of the format: find each record and read its seven ids. The file is
// mapped again each time, as by a load.
std::uint64_t MinimalWalk(const std::string& path) {
  const auto file = MappedFile::Open(path);
  const Bytes bytes = file->View();
  std::uint64_t sum = 0;
  for (std::uint64_t position = kTrcHeaderBytes; position < bytes.size();) {
    const std::uint8_t* at = bytes.data() + position;
    if (*at == kTagTrace) {
      const RawTrace trace(at + 1);
      sum += trace.MachineId() + trace.AppId() + trace.ComponentId() + trace.CategoryId() +
             trace.PidId() + trace.TidId() + trace.SourceFileId();
      position += 1 + trace.Size();
    } else {
      position += kTagBytes + (*at == kTagName ? RawName(at + kTagBytes).Size() : 0);
    }
  }
  return sum;
}

void Cat(const std::string& path) {
  const pid_t child = fork();
  if (child == 0) {
    execlp("sh", "sh", "-c", "exec cat \"$0\" >/dev/null", path.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
}

std::size_t Load(BenchHost& host, const std::string& path) {
  CTraceFileDoc document(host);
  LoadInto(host, document, path);
  const std::size_t count = document.m_traces.size();
  document.DeleteContents();
  return count;
}

}  // namespace

int main(int, char** argv) {
  const std::string path = SampleFile(argv[0]);
  BenchHost host;
  std::uint64_t sink = 0;
  std::size_t count = 0;

  const Measured walk = MeasureBeside(
      7, [&] { sink += MinimalWalk(path); }, [&] { count = Load(host, path); });
  PrintRow("load / walk of lengths and ids", walk.seconds * 1000, "ms", walk.floorSeconds * 1000,
           walk.ratio, 2.0);
  const Measured cat = MeasureBeside(
      7, [&] { Cat(path); }, [&] { count = Load(host, path); });
  PrintRow("load / cat to /dev/null", cat.seconds * 1000, "ms", cat.floorSeconds * 1000, cat.ratio,
           1.2);

  CTraceFileDoc document(host);
  LoadInto(host, document, path);
  RowStore rows(document.m_traces);
  rows.ShowAll();
  const double bytes = static_cast<double>(document.m_traces.StorageBytes() + rows.StorageBytes());
  const double perRecord = bytes / static_cast<double>(document.m_traces.size());
  PrintRow("memory, document and view, nothing filtered", perRecord, "B/record", 8.1,
           perRecord / 8.1, 24 / 8.1);
  std::printf("%zu traces, check %llu\n", count, static_cast<unsigned long long>(sink & 0xFF));
  return 0;
}
