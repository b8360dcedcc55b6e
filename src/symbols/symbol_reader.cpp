#include "symbols/symbol_reader.h"

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "symbols/recorded_stack.h"
#include "symbols/symbol_pipe.h"

SymbolReader::SymbolReader(std::vector<std::string> folders, std::string program, int timeoutMs)
    : m_folders(std::move(folders)), m_program(std::move(program)), m_timeoutMs(timeoutMs) {}

SymbolReader::~SymbolReader() {
  End();
}

std::vector<std::string> SymbolReader::FoldersOfEnvironment() {
  const char* const value = std::getenv("QUOR_SYMBOLS");
  return Folders(value ? value : "");
}

std::vector<std::string> SymbolReader::Folders(const std::string& list) {
  std::istringstream parts(list);
  std::vector<std::string> folders;
  for (std::string part; std::getline(parts, part, ':');)
    if (!part.empty()) folders.push_back(part);
  return folders;
}

StackNames SymbolReader::Names(const std::string& stack) {
  if (const auto known = m_known.find(stack); known != m_known.end()) return known->second;
  // What names nothing needs no process.
  if (ReadStack(stack).modules.empty()) return WithoutNames(stack);
  StackNames names;
  const bool answered = Ask(stack, names);
  if (!answered) {
    End();
    names = WithoutNames(stack);
    names.missing = {"no names: the files of this stack's modules could not be read"};
  }
  // What is missing may be there later. A stack that ends the process is not tried again.
  if (answered && !names.missing.empty()) return names;
  if (m_known.size() == kStacksMax) m_known.clear();
  return m_known[stack] = names;
}

bool SymbolReader::Ask(const std::string& stack, StackNames& names) {
  const auto cancelled = [this] { return m_cancelled.load() || (m_cancelIf && m_cancelIf()); };
  if (cancelled() || (m_process < 0 && !Start())) return false;
  std::string written;
  if (!SendText(m_socket, stack) || !ReceiveText(m_socket, written, m_timeoutMs, cancelled))
    return false;
  std::optional<StackNames> read = ReadNames(written);
  if (!read) return false;
  names = std::move(*read);
  return true;
}

bool SymbolReader::Start() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return false;
  m_socket = ends[0];
  const bool spawned = Spawn(ends[1]);
  close(ends[1]);
  return spawned;
}

// With no descriptor but its socket, and with all signals as they are by default, because one of
// them ends it in time.
bool SymbolReader::Spawn(int socket) {
  std::string name = "symbols", option = kSymbolWorkerOption;
  std::vector<std::string> folders = m_folders;
  std::vector<char*> arguments = {name.data(), option.data()};
  for (std::string& folder : folders) arguments.push_back(folder.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", 1, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", 1, 0);
  posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  const int error =
      posix_spawn(&m_process, m_program.c_str(), &actions, &attributes, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) m_process = -1;
  return error == 0;
}

void SymbolReader::End() {
  if (m_socket >= 0) close(m_socket);
  m_socket = -1;
  if (m_process <= 0) return;
  kill(m_process, SIGKILL);
  while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
  }
  m_process = -1;
}
