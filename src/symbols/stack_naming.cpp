#include "symbols/stack_naming.h"

#include <utility>

std::unique_ptr<StackNaming> g_stackNaming;

void StackQuestion::Give(const StackNames& names) {
  const std::lock_guard lock(m_mutex);
  if (m_answer) std::exchange(m_answer, nullptr)(names);
}

void StackQuestion::Withdraw() {
  const std::lock_guard lock(m_mutex);
  m_answer = nullptr;
}

bool StackQuestion::IsWithdrawn() const {
  const std::lock_guard lock(m_mutex);
  return !m_answer;
}

StackNaming::StackNaming(std::vector<std::string> folders, std::string program)
    : m_reader(std::move(folders), std::move(program)), m_thread([this] { Run(); }) {}

StackNaming::~StackNaming() {
  {
    const std::lock_guard lock(m_mutex);
    m_ends = true;
  }
  m_reader.Cancel();
  m_changed.notify_one();
  m_thread.join();
}

void StackNaming::Ask(std::shared_ptr<StackQuestion> question) {
  {
    const std::lock_guard lock(m_mutex);
    m_next = std::move(question);
  }
  m_changed.notify_one();
}

void StackNaming::Run() {
  std::unique_lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_ends || m_next; });
    if (m_ends) return;
    const std::shared_ptr<StackQuestion> question = std::exchange(m_next, nullptr);
    lock.unlock();
    if (!question->IsWithdrawn()) question->Give(m_reader.Names(question->Stack()));
    lock.lock();
  }
}
