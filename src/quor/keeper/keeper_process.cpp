#include "quor/keeper/keeper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>

#include "quor/keeper/keeper_address.h"
#include "quor/ring/segment_map.h"

namespace {

constexpr int kLookMs = 500;    // how often, while no service is there
constexpr int kFirstLooks = 8;  // until the service that started it has connected

bool HasEnded(const KeptApp& app) {
  pollfd process{app.process.Get(), POLLIN, 0};
  return poll(&process, 1, 0) == 1;
}

bool HasSomethingLeft(const KeptApp& app) {
  SegmentMap segment;
  const char* why = "";
  if (!segment.Open(fcntl(app.segment.Get(), F_DUPFD_CLOEXEC, 0), &why)) return false;
  const SegmentHeader* const header = segment.Header();
  return header->reserved.load() != header->consumed.load() || header->pendingDrops.load() != 0 ||
         header->sinkUntold.load() != 0;
}

class Keeper {
 public:
  Keeper(int listener, std::string path) : m_listener(listener), m_path(std::move(path)) {
    IsInPlace(&m_place);
  }

  void Run() {
    for (int looks = 0; m_service.Get() >= 0 || IsNeeded() || looks < kFirstLooks; ++looks) {
      pollfd ready[2] = {{m_listener, POLLIN, 0}, {m_service.Get(), POLLIN, 0}};
      const bool alone = m_service.Get() < 0;
      // A service that connects while the old one's end is still unread waits for that.
      poll(alone ? ready : ready + 1, 1, alone ? kLookMs : -1);
      if (alone && ready[0].revents != 0) Welcome();
      if (!alone && !Hear()) m_service.Close();
    }
    struct stat place {};
    if (IsInPlace(&place)) unlink(m_path.c_str());
  }

 private:
  bool IsInPlace(struct stat* place) const {
    return lstat(m_path.c_str(), place) == 0 &&
           (m_place.st_ino == 0 ||
            (place->st_ino == m_place.st_ino && place->st_dev == m_place.st_dev));
  }
  bool IsNeeded() {
    struct stat place {};
    std::erase_if(m_held, [](const auto& entry) {
      return HasEnded(entry.second) && !HasSomethingLeft(entry.second);
    });
    return !m_held.empty() && IsInPlace(&place);
  }
  void Welcome() {
    Descriptor service(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
    ucred peer{};
    socklen_t size = sizeof peer;
    if (service.Get() < 0 ||
        getsockopt(service.Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
        peer.uid != geteuid())
      return;
    bool told = true;
    for (const auto& [id, app] : m_held) told = told && SendKeep(service.Get(), app);
    if (!told || !SendKeeperWord(service.Get(), KeeperWord::End)) return;
    m_service = std::move(service);
  }
  bool Hear() {
    KeeperWord word{};
    KeptApp app;
    if (!ReceiveKeeperWord(m_service.Get(), &word, &app)) return false;
    if (word == KeeperWord::Keep) {
      m_held[app.id] = std::move(app);
    } else {
      m_held.erase(app.id);
    }
    return true;
  }

  const int m_listener;
  const std::string m_path;
  struct stat m_place {};
  Descriptor m_service;
  std::map<std::uint64_t, KeptApp> m_held;
};

int Listen(const std::string& path, std::string* why) {
  KeeperAddress address;
  if (!address.Fill(path)) {
    *why = path + ": " + std::strerror(errno);
    return -1;
  }
  unlink(path.c_str());
  Descriptor listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const mode_t before = umask(0177);
  const bool bound = bind(listener.Get(), address.Get(), KeeperAddress::kBytes) == 0;
  umask(before);
  if (!bound || listen(listener.Get(), 4) != 0) {
    *why = path + ": " + std::strerror(errno);
    return -1;
  }
  return listener.Release();
}

// Nothing of the service's stays open, above all not its lock.
[[noreturn]] void BecomeKeeper(int listener, const std::string& path) {
  constexpr int kKept = 3;
  setsid();
  prctl(PR_SET_NAME, "quord-keeper");
  const int nothing = open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, standard);
  if (listener != kKept) dup2(listener, kKept);
  close_range(kKept + 1, ~0u, 0);
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  if (chdir("/") == 0) Keeper(kKept, path).Run();
  _exit(0);
}

}  // namespace

bool StartKeeper(const std::string& path, std::string* why) {
  const Descriptor listener(Listen(path, why));
  if (listener.Get() < 0) return false;
  const pid_t child = fork();
  if (child == 0) {
    if (fork() != 0) _exit(0);
    BecomeKeeper(listener.Get(), path);
  }
  if (child < 0) {
    *why = std::strerror(errno);
    return false;
  }
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  return true;
}
