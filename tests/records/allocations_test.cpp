// What must not allocate, because it is done for every visible cell or for every trace of a file.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <new>

#include "records/old_translator.h"
#include "records/trace_list.h"
#include "support/trc_image.h"

namespace {
std::atomic<int> g_allocations = 0;
}

// Not inlined: the compiler would take the pair apart and see malloc and free.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++g_allocations;
  if (void* const memory = malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  free(memory);
}

namespace {

TEST(Allocations, AreCounted) {
  const int before = g_allocations;
  const std::string text(300, 'x');
  EXPECT_EQ(g_allocations, before + 1);
  EXPECT_EQ(text.size(), 300u);
}

TEST(Allocations, TheNumericAccessorsMakeNone) {
  const GuardedBytes bytes = TrcImage("").Trace("up").Guarded();
  const _TraceEvent_t event(bytes.At(1));
  const TraceEvent_i& trace = event;
  const int before = g_allocations;
  const std::uint64_t sum = trace.GetSequenceNumber() + trace.GetDate() + trace.GetTime() +
                            trace.GetComponentId() + trace.GetCategoryId() + trace.GetMachineId() +
                            trace.GetAppId() + trace.GetSourceFileId() + trace.GetPidId() +
                            trace.GetTidId() + static_cast<unsigned>(trace.GetAttributes()) +
                            trace.GetTicCount() + trace.GetSourceLine();
  EXPECT_EQ(g_allocations, before);
  EXPECT_NE(sum, 0u);
}

TEST(Allocations, ATraceOfAMappedFileMakesNoneOfItsOwn) {
  const GuardedBytes bytes = TrcImage("").Trace("up").Guarded();
  TraceList_t list;
  const int before = g_allocations;
  for (int number = 0; number < 100000; ++number) list.EmplaceRecord(bytes.At(1));
  EXPECT_LE(g_allocations, before + 20);
  EXPECT_EQ(list.size(), 100000u);
}

TEST(Allocations, AConvertedTraceMakesNoneOnceItsNamesAreKnown) {
  OldTranslator translator;
  const std::string text(300, 'x');
  std::uint8_t body[OldTrace::kFixedBytes] = {};
  translator.Translate(OldTrace(body), text);
  const int before = g_allocations;
  for (int number = 0; number < 1000; ++number) translator.Translate(OldTrace(body), text);
  EXPECT_EQ(g_allocations, before);
}

}  // namespace
