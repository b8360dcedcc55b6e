// Asks for the names of the functions of a stack, for a window that shows one stack at a time.
//
// Owner    A member of the window's object. Borrows the host.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "docview/host.h"
#include "symbols/stack_naming.h"

class StackNamer {
 public:
  explicit StackNamer(Host& host) : m_host(host) {}
  ~StackNamer();
  StackNamer(const StackNamer&) = delete;
  StackNamer& operator=(const StackNamer&) = delete;

  // Withdraws the question before. `then` runs when the names come, on the interface thread, unless
  // another stack was asked for or this has ended. An empty stack, or nobody to name it: never.
  void Ask(const std::string& stack, std::function<void(const StackNames&)> then);

 private:
  Host& m_host;
  std::shared_ptr<StackQuestion> m_question;
  std::shared_ptr<char> m_mark;  // of the question; held by nobody else
};
