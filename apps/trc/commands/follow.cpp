#include "commands/follow.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/fail_with.h"
#include "commands/file_follower.h"
#include "input/whole_records.h"
#include "records/trc_walk.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"

namespace {

constexpr int kPipeLookMs = 1000;
constexpr std::size_t kPipePieceBytes = std::size_t{256} << 10;

// A pipe, whose bytes come once.
class PipeFollower {
 public:
  PipeFollower(int descriptor, FollowedTraces& traces)
      : m_descriptor(descriptor), m_traces(traces) {}

  // False and a reason.
  bool Run(std::string* why) {
    bool ended = false;
    while (!ended && m_traces.Out().Flush() && !m_traces.IsOver() && IsRead()) {
      if (!Fill(&ended, why) || (!ended && !Begin(why))) return false;
      if (m_position > 0) Give();
    }
    if (!ended) return m_traces.Why().empty() || FailWith(why, m_traces.Why());
    if (m_position == 0)
      return FailWith(why, m_held.empty() ? "The file is empty" : "Invalid format.");
    if (!m_held.empty()) m_traces.Damage().cutAt = m_position;
    return true;
  }

 private:
  // Waits for bytes. False: nobody reads what is printed, or it was interrupted.
  bool IsRead() const {
    while (!Interrupted()) {
      pollfd ends[] = {{m_descriptor, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
      const int ready = poll(ends, 2, kPipeLookMs);
      if (ready > 0) return ends[1].revents == 0;
    }
    return false;
  }
  bool Fill(bool* ended, std::string* why) {
    const std::size_t before = m_held.size();
    m_held.resize(before + kPipePieceBytes);
    const ssize_t count = read(m_descriptor, m_held.data() + before, kPipePieceBytes);
    const int error = errno;
    m_held.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    *ended = count == 0;
    return count >= 0 || error == EINTR || error == EAGAIN || FailWith(why, SystemReason(error));
  }
  // The header.
  bool Begin(std::string* why) {
    if (m_position > 0) return true;
    const TrcBegin begin = BeginOfTrc(m_held, why);
    if (begin == TrcBegin::Good) Drop(kTrcHeaderBytes);
    return begin != TrcBegin::Bad;
  }
  void Give() { Drop(m_traces.Give(m_held, m_position, false)); }
  void Drop(std::size_t bytes) {
    m_held.erase(m_held.begin(), m_held.begin() + static_cast<std::ptrdiff_t>(bytes));
    m_position += bytes;
  }

  const int m_descriptor;
  FollowedTraces& m_traces;
  std::vector<std::uint8_t> m_held;
  std::uint64_t m_position = 0;
};

bool IsPipe(const std::string& path) {
  struct stat status {};
  return path == "-" ||
         (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode));
}

struct Followed {
  bool good = false, damaged = false, lost = false;
};

Followed FollowPipe(const std::string& path, const DumpOptions& options, FollowedTraces& traces) {
  const std::string name = path == "-" ? "standard input" : path;
  const auto fail = [&](const std::string& why) {
    PrintError(name + ": " + why);
    return Followed{};
  };
  if (options.traces.tail != TraceOptions::kAll)
    return fail("--tail goes with no pipe that is followed: it has no last traces before it ends");
  const int descriptor =
      path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return fail(SystemReason());
  std::string why;
  if (!PipeFollower(descriptor, traces).Run(&why)) return fail(why);
  const TrcDamage& damage = traces.Damage();
  if (damage.Any()) PrintError(name + ": damaged: " + DamageText(damage, true));
  return {true, damage.Any(), false};
}

Followed FollowFile(const std::string& path, const DumpOptions& options, FollowedTraces& traces) {
  FileFollower follower(path, options, traces);
  const bool good = follower.Run();
  return {good, follower.HasDamage(), follower.HasLoss()};
}

}  // namespace

int RunFollow(const DumpOptions& options, FollowedTraces::Test test) {
  const bool asks = test != nullptr;
  Output output;
  FollowedTraces traces(options, std::move(test), output);
  const std::string& path = options.files.front();
  const Followed followed =
      IsPipe(path) ? FollowPipe(path, options, traces) : FollowFile(path, options, traces);
  for (const std::string& missing : traces.Choice().Missing()) PrintError(missing);
  const int status = output.Finish();
  if (status == kExitBad || !followed.good) return kExitBad;
  if (followed.lost) return kExitNo;
  if (followed.damaged) return kExitDamaged;
  return asks && traces.Choice().Chosen() == 0 ? kExitNo : kExitGood;
}
