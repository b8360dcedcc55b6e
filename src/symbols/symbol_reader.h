// Names the functions of recorded call stacks, by a process that reads their modules' files.
//
// Owner    Starts the process when it is first needed and ends it. Keeps the names of the last
//          stacks, those that are complete or that no process could give.
// Errors   Without the process (it cannot be started, has crashed, takes too long) frames stay as
//          they were recorded, and `missing` says so. The next stack gets a new process.
// Threads  One. Names waits for files to be read: not on an interface thread.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "symbols/stack_names.h"

class SymbolReader {
 public:
  // `program`: one that runs RunSymbolWorker; this one by default.
  explicit SymbolReader(std::vector<std::string> folders, std::string program = "/proc/self/exe",
                        int timeoutMs = kTimeoutMs);
  ~SymbolReader();
  SymbolReader(const SymbolReader&) = delete;
  SymbolReader& operator=(const SymbolReader&) = delete;

  StackNames Names(const std::string& stack);
  // Ends what Names waits for, now and from now on. Any thread.
  void Cancel() { m_cancelled.store(true); }
  // Is asked while Names waits; true cancels.
  void CancelIf(std::function<bool()> cancelled) { m_cancelIf = std::move(cancelled); }

  // The folders of a list with colons between, and those of the variable QUOR_SYMBOLS.
  static std::vector<std::string> Folders(const std::string& list);
  static std::vector<std::string> FoldersOfEnvironment();

 private:
  static constexpr int kTimeoutMs = 65000;
  static constexpr std::size_t kStacksMax = 1024;
  bool Ask(const std::string& stack, StackNames& names);
  bool Start();
  bool Spawn(int socket);
  void End();

  const std::vector<std::string> m_folders;
  const std::string m_program;
  const int m_timeoutMs;
  std::unordered_map<std::string, StackNames> m_known;
  std::atomic<bool> m_cancelled{false};
  std::function<bool()> m_cancelIf;
  int m_socket = -1;
  pid_t m_process = -1;
};
