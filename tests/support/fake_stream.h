// What the fake engine stores: messages in the order of their sequences, in a stream or a bucket.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quor/engine/engine.h"

// Whether a subject is one of a filter.
inline bool FakeSubjectMatches(std::string_view filter, std::string_view subject) {
  while (true) {
    const auto filterEnd = std::min(filter.find('.'), filter.size());
    const auto subjectEnd = std::min(subject.find('.'), subject.size());
    const auto word = filter.substr(0, filterEnd);
    if (word == ">") return !subject.empty();
    if (word != "*" && word != subject.substr(0, subjectEnd)) return false;
    const bool last = filterEnd == filter.size(), lastWord = subjectEnd == subject.size();
    if (last || lastWord) return last && lastWord;
    filter.remove_prefix(filterEnd + 1);
    subject.remove_prefix(subjectEnd + 1);
  }
}

// No locks: those of the fake engine.
class FakeStream {
 public:
  std::size_t mostMessages = 1'000'000;
  std::size_t mostOfSubject = 1'000'000;
  unsigned made = 1;  // how often it was begun

  std::uint64_t Store(EngineMessage message) {
    message.sequence = ++m_last;
    const std::string subject = message.subject;
    m_messages.push_back(std::move(message));
    if (++m_ofSubject[subject] > mostOfSubject) EraseFirst(subject);
    if (m_messages.size() > mostMessages) Trim(m_messages.size() - mostMessages);
    return m_last;
  }

  // The sequence that this id has, or 0.
  std::uint64_t Find(const std::string& id) const {
    for (const auto& message : m_messages)
      if (!id.empty() && message.id == id) return message.sequence;
    return 0;
  }

  void Trim(std::size_t count) {
    for (; count && !m_messages.empty(); count--) {
      m_ofSubject[m_messages.front().subject]--;
      m_messages.pop_front();
    }
  }

  void BeginAnew() {
    m_messages.clear();
    m_ofSubject.clear();
    m_last = 0;
    made++;
  }

  const EngineMessage* Last(const std::string& subject) const {
    for (auto at = m_messages.rbegin(); at != m_messages.rend(); ++at)
      if (at->subject == subject) return &*at;
    return nullptr;
  }

  std::uint64_t First(const EngineStart& start) const {
    using At = EngineStart::At;
    if (start.at == At::Sequence) return start.sequence;
    if (start.at == At::Next) return m_last + 1;
    for (const auto& message : m_messages)
      if (start.at == At::Oldest || message.arrived >= start.time) return message.sequence;
    return m_last + 1;
  }

  const std::deque<EngineMessage>& Messages() const { return m_messages; }

 private:
  void EraseFirst(const std::string& subject) {
    for (auto at = m_messages.begin(); at != m_messages.end(); ++at)
      if (at->subject == subject) {
        m_messages.erase(at);
        m_ofSubject[subject]--;
        return;
      }
  }

  std::deque<EngineMessage> m_messages;
  std::map<std::string, std::size_t> m_ofSubject;
  std::uint64_t m_last = 0;
};
