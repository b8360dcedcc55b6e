#include "records/walkers/trc_window.h"

#include <algorithm>
#include <cstring>

#include "base/thread_time.h"

namespace {

// A copy between addresses that lie alike in their lines is faster.
constexpr std::size_t kLine = 64;
// As much as a page of the page tables' next level maps, in the pieces that the kernel maps of
// smaller pages at once.
constexpr std::uint64_t kTrialBytes = std::uint64_t{2} << 20, kTrialStep = std::uint64_t{64} << 10;
constexpr std::uint64_t kFewFaults = 8;

}  // namespace

Bytes TrcWindow::At(std::uint64_t position) {
  if (m_way == Way::ByTrial) m_way = Try(position);
  if (m_way == Way::Copy) return Copied(position);
  const Bytes rest = m_view.subspan(static_cast<std::size_t>(position));
  return rest.first(std::min(rest.size(), kBytes));
}

TrcWindow::Way TrcWindow::Try(std::uint64_t position) const {
  if (m_view.size() - position < kTrialBytes) return Way::View;
  const std::uint64_t before = ThreadFaults();
  for (std::uint64_t passed = 0; passed < kTrialBytes; passed += kTrialStep)
    static_cast<void>(*const_cast<const volatile std::uint8_t*>(m_view.data() + position + passed));
  return ThreadFaults() - before > kFewFaults ? Way::Copy : Way::View;
}

Bytes TrcWindow::Copied(std::uint64_t position) {
  if (!m_memory)
    m_memory.reset(new std::uint8_t[kLine + kBytes + kReach + MappedFile::kGuardBytes]);
  const std::uint64_t passed = position - m_position;
  const std::size_t kept = passed < m_held ? m_held - static_cast<std::size_t>(passed) : 0;
  std::uint8_t* const begin = m_memory.get() + position % kLine;
  if (kept > 0) std::memmove(begin, m_begin + passed, kept);
  const std::uint64_t left = m_view.size() - position;
  m_held = static_cast<std::size_t>(std::min<std::uint64_t>(left, kBytes + kReach));
  if (m_held > kept) m_file->Copy(begin + kept, position + kept, m_held - kept);
  m_begin = begin;
  m_position = position;
  if (m_held < left) return {begin, m_held - kReach};
  std::memset(begin + m_held, 0, MappedFile::kGuardBytes);
  return {begin, m_held};
}
