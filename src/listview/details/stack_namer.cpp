#include "listview/details/stack_namer.h"

#include <utility>

StackNamer::~StackNamer() {
  if (m_question) m_question->Withdraw();
}

// The answer comes on another thread, which may hold the question longer than this lives. So it is
// taken only while the mark of the question is there.
void StackNamer::Ask(const std::string& stack, std::function<void(const StackNames&)> then) {
  if (m_question) m_question->Withdraw();
  m_question.reset();
  m_mark.reset();
  if (stack.empty() || !g_stackNaming) return;
  m_mark = std::make_shared<char>();
  const std::weak_ptr<char> mark = m_mark;
  m_question = std::make_shared<StackQuestion>(
      stack, [&host = m_host, mark, then = std::move(then)](const StackNames& names) {
        host.Post([mark, then, names] {
          if (!mark.expired()) then(names);
        });
      });
  g_stackNaming->Ask(m_question);
}
