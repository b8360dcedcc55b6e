#include "quor/client/link/bridge_process.h"

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <asio/post.hpp>
#include <cerrno>

#include "base/fail_with.h"
#include "quor/link/paths.h"

namespace {

constexpr char kProgramName[] = "quor-bridge";

// It keeps nothing that would have to be saved.
void EndProcess(pid_t process) {
  kill(process, SIGKILL);
  while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

class BridgeStream final : public ByteStream {
 public:
  BridgeStream(std::shared_ptr<ByteStream> stream, pid_t process)
      : m_stream(std::move(stream)), m_process(process) {}
  ~BridgeStream() override { EndProcess(m_process); }

  asio::any_io_executor Executor() override { return m_stream->Executor(); }
  void ReadSome(std::span<std::uint8_t> to, Done done) override {
    m_stream->ReadSome(to, std::move(done));
  }
  void WriteAll(const std::vector<asio::const_buffer>& from, Done done) override {
    m_stream->WriteAll(from, std::move(done));
  }
  void EndSending() override { m_stream->EndSending(); }
  void Close() override { m_stream->Close(); }

 private:
  const std::shared_ptr<ByteStream> m_stream;
  const pid_t m_process;
};

// Signals are as they are by default there, whatever this program does with them.
int Spawn(const std::string& program, const std::string& address, int socket, pid_t* process) {
  std::string name = kProgramName, verb = "read", of = address;
  char* const arguments[] = {name.data(), verb.data(), of.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", 1, 0);
  posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  const int error =
      posix_spawn(process, program.c_str(), &actions, &attributes, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error;
}

std::shared_ptr<ByteStream> Start(const asio::any_io_executor& executor, const std::string& address,
                                  std::string* why) {
  const std::string program = ProgramOfThese(kProgramName);
  if (program.empty())
    return FailWith(why,
                    "quor-bridge, which reads the traces of a cluster, is not installed: it is "
                    "neither beside this program nor on PATH",
                    nullptr);
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    return FailWith(why, "quor-bridge: " + SystemReason(errno), nullptr);
  pid_t process = -1;
  const int failed = Spawn(program, address, ends[1], &process);
  close(ends[1]);
  LocalSocket socket(executor);
  std::error_code error(failed, std::system_category());
  if (!error) socket.assign(asio::local::stream_protocol(), ends[0], error);
  if (!error) return std::make_shared<BridgeStream>(MakeStream(std::move(socket)), process);
  close(ends[0]);
  if (!failed) EndProcess(process);
  return FailWith(why, program + ": " + error.message(), nullptr);
}

}  // namespace

void StartBridge(const asio::any_io_executor& executor, const std::string& address,
                 Connected done) {
  asio::post(executor, [executor, address, done = std::move(done)] {
    std::string why;
    auto stream = Start(executor, address, &why);
    done(std::move(stream), why);
  });
}
