// Any bytes as a .trc file, walked by several walkers that meet: they find what one finds. The
// first two bytes choose how many they are and how large their chunks.
#include <cstdlib>

#include "base/mapped_file.h"
#include "support/noted_walk.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const TrcWalkers walkers{1 + data[0] % TrcWalkers::kMost, 1 + std::uint64_t{data[1]} * data[1]};
  std::vector<std::uint8_t> bytes(data + 2, data + size);
  bytes.resize(size - 2 + MappedFile::kGuardBytes);
  const Bytes view(bytes.data(), size - 2);
  if (!(WalkedTogether(view, walkers, false) == WalkedAlone(view))) std::abort();
  return 0;
}
