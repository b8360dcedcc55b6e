#include "quor/client/link/dial.h"

#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <cerrno>

#include "base/fail_with.h"
#include "quor/link/link_socket.h"
#include "quor/link/named_service.h"
#include "quor/link/paths.h"
#include "quor/protocol/tls.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kLookAgain{20};

// Keeps itself alive until it has called back.
class LocalDial final : public std::enable_shared_from_this<LocalDial> {
 public:
  LocalDial(const asio::any_io_executor& executor, bool mayStart,
            std::chrono::milliseconds deadline, Connected done)
      : m_timer(executor),
        m_path(ServiceSocketPath()),
        m_mayStart(mayStart),
        m_until(Clock::now() + deadline),
        m_done(std::move(done)) {}

  void Try() {
    std::string why;
    if (!SocketFolderIsSafe(m_path, &why)) return m_done(nullptr, why);
    const int descriptor = m_isNamed ? ConnectToNamedService(m_path.c_str())
                                     : ConnectToService(m_path.c_str(), TrustedOwner(m_path));
    if (descriptor >= 0) return Succeed(descriptor);
    const int error = errno;
    const bool nobody = error == ENOENT || error == ECONNREFUSED;
    if (nobody && m_mayStart) {
      m_mayStart = false;
      const std::string program = ServiceProgram();
      m_started = !program.empty() && StartService(program);
    }
    // EAGAIN: the service listens, and its queue of connections is full.
    const bool mayCome = error == EAGAIN || (nobody && m_started);
    if (!mayCome || Clock::now() + kLookAgain > m_until)
      return m_done(nullptr, ErrorText(nobody, error));
    m_timer.expires_after(kLookAgain);
    m_timer.async_wait([self = shared_from_this()](const std::error_code&) { self->Try(); });
  }

 private:
  std::string ErrorText(bool nobody, int error) const {
    std::string why = m_path + ": " + SystemReason(error);
    if (!nobody) return why;
    if (IsMachineSocket(m_path))
      return "the trace service of this machine does not run; its administrator starts it (" + why +
             ")";
    if (m_started) return "quord was started and does not answer (" + why + ")";
    const std::string inside = WhyNotStarted();
    return "no trace service runs here; start it with quord (" +
           why.append(inside.empty() ? "" : "; " + inside) + ")";
  }
  void Succeed(int descriptor) {
    LocalSocket socket(m_timer.get_executor());
    std::error_code error;
    socket.assign(asio::local::stream_protocol(), descriptor, error);
    if (error) return m_done(nullptr, error.message());
    m_done(MakeStream(std::move(socket)), {});
  }

  asio::steady_timer m_timer;
  const std::string m_path;
  // By the user, and so perhaps another user's: who may watch it is that service's decision.
  const bool m_isNamed = !ReadServiceEnvironment().socket.empty();
  bool m_mayStart, m_started = false;
  const Clock::time_point m_until;
  const Connected m_done;
};

}  // namespace

void Dial(const asio::any_io_executor& executor, const Machine& machine, bool mayStart,
          std::chrono::milliseconds deadline, Connected done) {
  if (machine.local) {
    auto dial = std::make_shared<LocalDial>(executor, mayStart, deadline, std::move(done));
    asio::post(executor, [dial] { dial->Try(); });
    return;
  }
  std::string why;
  auto context = MakeClientTls(KeysFolder(), &why);
  if (!context) {
    asio::post(executor, [done = std::move(done), why] { done(nullptr, why); });
    return;
  }
  ConnectTls(executor, std::move(context), machine.host, machine.port, deadline, std::move(done));
}
