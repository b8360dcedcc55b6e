#include "notes/fingerprint.h"

#include <algorithm>

#include "records/raw_trace.h"

namespace {

constexpr std::uint64_t kHeadBytes[] = {64, 1024, 16 * 1024, 64 * 1024};

}  // namespace

std::uint64_t PrintOf(Bytes bytes) {
  std::uint64_t print = 0xCBF29CE484222325u;
  for (const std::uint8_t byte : bytes) print = (print ^ byte) * 0x100000001B3u;
  return print;
}

std::uint64_t PrintOfRecord(const std::uint8_t* record) {
  return PrintOf({record, RawTrace(record).Size()});
}

FilePrint PrintOfFile(Bytes file) {
  FilePrint print{.size = file.size(), .heads = {}};
  for (const std::uint64_t bytes : kHeadBytes) {
    const std::uint64_t held = std::min<std::uint64_t>(bytes, file.size());
    print.heads.push_back({held, PrintOf(file.first(static_cast<std::size_t>(held)))});
    if (held < bytes) break;
  }
  return print;
}

bool IsSameFile(const FilePrint& known, Bytes file) {
  const FilePrint::Head* longest = nullptr;
  for (const FilePrint::Head& head : known.heads)
    if (head.bytes <= file.size() && (!longest || head.bytes > longest->bytes)) longest = &head;
  return !longest ||
         PrintOf(file.first(static_cast<std::size_t>(longest->bytes))) == longest->print;
}
