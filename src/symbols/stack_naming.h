// Names stacks on a thread of its own, for windows that show a stack before its names are there.
//
// Owner    The program that shows windows makes g_stackNaming and ends it. Its end waits for no
//          file.
// Threads  Ask from any thread. Answers come on the thread of its own.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "symbols/symbol_reader.h"

// A question that somebody waits for. Its end, or its next question, withdraws it: an answer has
// then been given in full or will never be given.
class StackQuestion {
 public:
  using Answer = std::function<void(const StackNames& names)>;
  StackQuestion(std::string stack, Answer answer)
      : m_stack(std::move(stack)), m_answer(std::move(answer)) {}

  const std::string& Stack() const { return m_stack; }
  void Give(const StackNames& names);
  void Withdraw();
  bool IsWithdrawn() const;

 private:
  const std::string m_stack;
  mutable std::mutex m_mutex;
  Answer m_answer;  // null: given, or withdrawn
};

class StackNaming {
 public:
  // `program`: one that runs RunSymbolWorker.
  StackNaming(std::vector<std::string> folders, std::string program);
  ~StackNaming();
  StackNaming(const StackNaming&) = delete;
  StackNaming& operator=(const StackNaming&) = delete;

  // Replaces a question that has not been begun.
  void Ask(std::shared_ptr<StackQuestion> question);

 private:
  void Run();

  SymbolReader m_reader;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::shared_ptr<StackQuestion> m_next;
  bool m_ends = false;
  std::thread m_thread;
};

// Null: stacks stay as they were recorded.
extern std::unique_ptr<StackNaming> g_stackNaming;
