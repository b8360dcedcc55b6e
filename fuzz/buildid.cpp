// The build id of any bytes: digits or nothing, and no byte outside of them is read.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "symbols/elf_build_id.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string id = ElfBuildId([&](std::uint64_t offset, void* to, std::size_t count) {
    if (offset > size || count > size - offset) return false;
    if (count > 0) std::memcpy(to, data + offset, count);
    return true;
  });
  if (id.size() > 128 || id.size() % 2 != 0) std::abort();
  if (id.find_first_not_of("0123456789abcdef") != id.npos) std::abort();
  return 0;
}
