#include "sample/sample_traces.h"

#include <chrono>

namespace {

constexpr std::size_t kDeepest = 5;  // blocks of a thread
constexpr std::uint64_t kPsPerMs = 1'000'000'000;
constexpr std::chrono::sys_days kFirstDay{std::chrono::year{2026} / 3 / 28};
constexpr std::uint64_t kFirstMs = 7u * 3600 * 1000;  // into that day

std::uint32_t DateOf(std::chrono::sys_days day) {
  const std::chrono::year_month_day date(day);
  return PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

std::uint32_t TimeOf(std::uint64_t ms) {
  const auto part = static_cast<unsigned>(ms);
  return PackTime(part / 3'600'000, part / 60'000 % 60, part / 1000 % 60, part % 1000);
}

}  // namespace

SampleTraces::SampleTraces(std::uint64_t traces, std::uint64_t seed)
    : m_random(seed), m_left(traces) {
  MakeThreads();
}

void SampleTraces::MakeThreads() {
  std::uint32_t number = 1800;
  for (const SampleProcess& process : SampleProcesses()) {
    number += 1 + m_random.Below(900);
    const std::uint32_t processNumber = number;
    for (unsigned i = 0; i < process.app->threads; ++i) {
      Thread& thread = m_threads.emplace_back();
      thread.app = process.app;
      thread.machine = IdOf(process.machine);
      thread.application = IdOf(process.app->name);
      thread.process = IdOf(std::to_string(processNumber));
      // The first thread has the number of its process.
      thread.thread = IdOf(std::to_string(number));
      thread.clockStartPs = (std::uint64_t{thread.machine} * 977 + 41) * kPsPerMs * 1000;
      number += 1 + m_random.Below(3);
    }
  }
}

NameId SampleTraces::IdOf(const std::string& name) {
  const auto [entry, added] = m_ids.try_emplace(name, static_cast<NameId>(m_ids.size() + 1));
  if (added) m_names[entry->second].name = name;
  return entry->second;
}

const SampleTraces::PointIds& SampleTraces::IdsOf(const SamplePoint& point) {
  const auto [entry, added] = m_pointIds.try_emplace(&point);
  if (added) entry->second = {IdOf(point.component), IdOf(point.category), IdOf(point.file)};
  return entry->second;
}

TraceEvent_i* SampleTraces::Next() {
  if (m_left == 0) return nullptr;
  Thread& thread = PickThread();
  m_text.clear();
  const SamplePoint& point = Step(thread);
  WriteStack(thread, point);
  MoveClock();
  --m_left;
  return Make(thread, point);
}

// A thread continues for a while before another one is chosen; at the end only those with open
// blocks are left.
SampleTraces::Thread& SampleTraces::PickThread() {
  if (m_random.Below(8) < 3) m_current = m_random.Below(m_threads.size());
  if (m_left <= m_openBlocks) {
    while (m_threads[m_current].blocks.empty()) m_current = (m_current + 1) % m_threads.size();
  }
  return m_threads[m_current];
}

// Decides what the thread does next, and writes its text.
const SamplePoint& SampleTraces::Step(Thread& thread) {
  const std::uint32_t dice = m_random.Below(100);
  const bool mustEnd = m_left <= m_openBlocks;
  if (!mustEnd && dice < 16 && thread.blocks.size() < kDeepest && m_left > m_openBlocks + 1) {
    const SamplePoint& point = thread.app->blocks[m_random.Below(thread.app->blocks.size())];
    Block& block = thread.blocks.emplace_back(Block{&point, {}});
    AppendFilled(block.text, point.text, m_random);
    ++m_openBlocks;
    m_text.append("Begin: ").append(block.text);
    return point;
  }
  if (mustEnd || (dice < 32 && !thread.blocks.empty())) {
    const SamplePoint& point = *thread.blocks.back().point;
    m_text.append("End: ").append(thread.blocks.back().text);
    thread.blocks.pop_back();
    --m_openBlocks;
    return point;
  }
  const auto& messages = thread.app->messages;
  std::size_t choice = m_random.Below(messages.size());
  // Warnings and errors are last in the tables and are rare.
  if ((messages[choice].attributes & kAttributeInfo) == 0 && m_random.Below(8) != 0) choice = 0;
  AppendFilled(m_text, messages[choice].text, m_random);
  return messages[choice];
}

// Errors have a stack, warnings sometimes.
void SampleTraces::WriteStack(const Thread& thread, const SamplePoint& point) {
  m_stack.clear();
  const bool wanted = (point.attributes & kAttributeError) != 0 ||
                      ((point.attributes & kAttributeWarn) != 0 && m_random.Below(3) == 0);
  if (!wanted) return;
  const auto frame = [this](const SamplePoint& at, std::size_t offset) {
    if (!m_stack.empty()) m_stack.push_back('\n');
    m_stack.append(at.function).append(" (").append(at.file).append(":");
    m_stack.append(std::to_string(at.line + offset)).append(")");
  };
  frame(point, 0);
  for (std::size_t i = thread.blocks.size(); i-- > 0;) frame(*thread.blocks[i].point, i + 2);
  m_stack.append("\nmain");
}

// Usually microseconds pass, sometimes there is a pause.
void SampleTraces::MoveClock() {
  m_elapsedPs += 1 + m_random.Below(300'000'000);
  if (m_random.Below(64) == 0) m_elapsedPs += m_random.Below(40) * kPsPerMs;
}

TraceEvent_i* SampleTraces::Make(const Thread& thread, const SamplePoint& point) {
  constexpr std::uint64_t kMsPerDay = 86'400'000;
  const PointIds& ids = IdsOf(point);
  const std::uint64_t ms = kFirstMs + m_elapsedPs / kPsPerMs;
  const std::uint64_t tics = thread.app->ticCounts ? thread.clockStartPs + m_elapsedPs : 0;
  const auto day = kFirstDay + std::chrono::days(ms / kMsPerDay);
  return TraceEvent_i::Create(
      ++m_count, thread.machine, thread.application, ids.component, ids.category, DateOf(day),
      TimeOf(ms % kMsPerDay), tics, thread.process, thread.thread,
      static_cast<unsigned>(point.attributes), ids.file, point.line, m_text, m_stack);
}
