#include "quor/traced/forwarded_note.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/fault_guard.h"

namespace {

constexpr std::size_t kHeaderPage = 4096;
static_assert(sizeof(SegmentHeader) <= kHeaderPage);

class HeaderPage {
 public:
  explicit HeaderPage(void* memory)
      : m_memory(memory), m_guard(memory, kHeaderPage, FaultGuard::Access::Write) {}
  ~HeaderPage() {
    m_guard = FaultGuard();
    munmap(m_memory, kHeaderPage);
  }
  HeaderPage(const HeaderPage&) = delete;
  HeaderPage& operator=(const HeaderPage&) = delete;
  SegmentHeader& Header() const { return *static_cast<SegmentHeader*>(m_memory); }

 private:
  void* const m_memory;
  FaultGuard m_guard;
};

}  // namespace

std::string ForwardTarget(const SegmentHeader& header) {
  char copy[kForwardTargetBytes];
  std::memcpy(copy, header.forwardTarget, sizeof copy);
  return {copy, strnlen(copy, sizeof copy)};
}

void SetForwardTarget(SegmentHeader& header, const std::string& machine) {
  std::memset(header.forwardTarget, 0, kForwardTargetBytes);
  std::memcpy(header.forwardTarget, machine.data(),
              std::min(machine.size(), kForwardTargetBytes - 1));
}

std::function<void(std::uint64_t)> ForwardedNote(int file, std::uint64_t before) {
  void* const memory = mmap(nullptr, kHeaderPage, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (memory == MAP_FAILED) return {};
  return [page = std::make_shared<HeaderPage>(memory), before](std::uint64_t forwarded) {
    page->Header().forwarded.store(before + forwarded, std::memory_order_release);
  };
}

std::uint64_t ForwardedOf(std::uint64_t forwarded, std::uint64_t served, std::uint64_t elsewhere) {
  return std::clamp(forwarded, elsewhere, std::max(served, elsewhere)) - elsewhere;
}
