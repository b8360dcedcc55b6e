#include "quor/client/link/service_link.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <condition_variable>
#include <mutex>
#include <random>
#include <system_error>
#include <thread>

#include "base/fail_with.h"
#include "quor/address/relay_address.h"
#include "quor/client/link/bridge_process.h"
#include "quor/client/link/dial.h"

namespace {

using namespace std::chrono_literals;
using quor::wire::Welcome;
constexpr std::chrono::milliseconds kHelloDeadline = 4000ms;
constexpr std::chrono::milliseconds kEndPatience = 700ms;
constexpr std::chrono::milliseconds kFirstPause = 50ms;
constexpr std::chrono::milliseconds kLongestPause = 2000ms;
// The kernel reports the end of the local service. A service that is only stopped still has traces
// for us, and would lose them with the connection.
constexpr std::chrono::milliseconds kLocalPatience = 60000ms;

ConnectionLimits LimitsTo(const Machine& machine) {
  ConnectionLimits limits;
  if (machine.local) limits.silenceDeadline = limits.writeDeadline = kLocalPatience;
  return limits;
}

}  // namespace

// Shared with its thread, which outlives the link while a name is being resolved.
class ServiceLink::Core final : public Connection::Handler,
                                public std::enable_shared_from_this<Core> {
 public:
  Core(std::string machine, quor::wire::Role role, User& user)
      : m_machine(std::move(machine)), m_role(role), m_user(&user) {}

  bool Start(std::chrono::milliseconds deadline, std::string* why) {
    m_isRelay = IsRelayAddress(m_machine);
    if (m_isRelay ? !ParseRelayAddress(m_machine, why) : !ParseMachine(m_machine, why))
      return false;
    m_to = m_isRelay ? Machine{} : *ParseMachine(m_machine);
    m_deadline = deadline - kEndPatience;  // leaves this time for the end of a failed start
    return Begin(why) && Await(m_deadline, why);
  }
  bool Await(std::chrono::milliseconds deadline, std::string* why) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, deadline, [this] { return m_up || m_failed; });
    if (m_up) return true;
    return FailWith(why, m_why.empty() ? Where() + ": no answer in time" : m_why);
  }
  void Stop() {
    if (!m_thread.joinable()) return;
    std::unique_lock lock(m_mutex);
    m_stopped = true;
    if (m_io) m_io->stop();
    // Handlers never wait, so this takes no longer than one of them.
    m_changed.wait(lock, [this] { return !m_running; });
    // Resolving a name cannot be cancelled: the thread then ends by itself.
    const bool gone = m_changed.wait_for(lock, kEndPatience, [this] { return m_gone; });
    lock.unlock();
    gone ? m_thread.join() : m_thread.detach();
  }
  void Post(std::function<void(Connection*)> call) {
    const std::lock_guard lock(m_mutex);
    if (!m_io || m_stopped) return;
    asio::post(*m_io,
               [this, call = std::move(call)] { call(m_welcomed ? m_connection.get() : nullptr); });
  }
  void Break(const std::string& reason) {
    if (!m_connection) return;
    m_connection->Close();
    Ended(reason);
  }

 private:
  // The system may have no descriptor or no thread for it.
  bool Begin(std::string* why) {
    const std::lock_guard lock(m_mutex);
    try {
      m_io = std::make_unique<asio::io_context>(1);
      m_timer = std::make_unique<asio::steady_timer>(*m_io);
      m_thread = std::thread([self = shared_from_this()] { self->Run(); });
    } catch (const std::system_error& error) {
      m_timer.reset();
      m_io.reset();
      return FailWith(why, Where() + ": " + error.code().message());
    }
    return m_running = true;
  }
  void Run() {
    asio::post(*m_io, [this] { DialNow(); });
    m_io->run();
    m_connection.reset();
    std::unique_ptr<asio::io_context> io;
    {
      const std::lock_guard lock(m_mutex);
      m_timer.reset();
      io = std::move(m_io);
      m_running = false;
      m_changed.notify_all();
    }
    io.reset();
    const std::lock_guard lock(m_mutex);
    m_gone = true;
    m_changed.notify_all();
  }

  void DialNow() {
    const bool first = !m_wasUp;
    const auto done = [this](std::shared_ptr<ByteStream> stream, const std::string& why) {
      stream ? Greet(std::move(stream)) : Fail(why);
    };
    try {
      if (m_isRelay) return StartBridge(m_io->get_executor(), m_machine, done);
      ::Dial(m_io->get_executor(), m_to, first, first ? m_deadline : kHelloDeadline, done);
    } catch (const std::system_error& error) {  // no thread to resolve the name
      Fail(Where() + ": " + error.code().message());
    }
  }
  void Greet(std::shared_ptr<ByteStream> stream) {
    m_connection = Connection::Start(std::move(stream), *this, LimitsTo(m_to));
    quor::wire::Hello hello;
    hello.set_version(kProtocolVersion);
    hello.set_role(m_role);
    m_connection->Send(FrameType::Hello, hello);
    m_timer->expires_after(kHelloDeadline);
    m_timer->async_wait([this](const std::error_code& error) {
      if (!error && !m_welcomed) Break(Where() + ": no welcome in time");
    });
  }

  void OnFrame(const Frame& frame) override {
    if (m_welcomed) return m_user->OnFrame(frame);
    Welcome welcome;
    quor::wire::Refused refused;
    if (frame.type == FrameType::Refused && ParseBody(frame, &refused))
      return Break(Where() + " refuses: " + refused.text());
    if (frame.type != FrameType::Welcome || !ParseBody(frame, &welcome))
      return Break(Where() + " does not speak this protocol");
    if (welcome.version() != kProtocolVersion)
      return Break(Where() + " speaks version " + std::to_string(welcome.version()) +
                   " of the protocol, not " + std::to_string(kProtocolVersion));
    m_timer->cancel();
    m_welcomed = m_wasUp = true;
    m_pause = kFirstPause;
    m_user->OnUp(*m_connection, welcome);
    const std::lock_guard lock(m_mutex);
    m_up = true;
    m_changed.notify_all();
  }
  void OnRested() override {
    if (m_welcomed) m_user->OnRested();
  }
  void OnClosed(const std::string& reason) override { Ended(Where() + ": " + reason); }
  std::string Where() const {
    if (m_isRelay) return m_machine;
    return m_to.local ? "the trace service of this machine" : AddressOf(m_to.host, m_to.port);
  }
  void Ended(const std::string& reason) {
    m_connection.reset();
    if (std::exchange(m_welcomed, false)) {
      {
        const std::lock_guard lock(m_mutex);
        m_up = false;
      }
      m_user->OnDown(reason);
    }
    Fail(reason);
  }

  // Tries again later. If the link was never up, Start returns the failure instead.
  void Fail(const std::string& why) {
    {
      const std::lock_guard lock(m_mutex);
      m_why = why;
      m_failed = !m_wasUp;
      m_changed.notify_all();
    }
    if (!m_wasUp) return;
    // Not all monitors of a machine should connect at the same moment.
    std::uniform_int_distribution<int> spread(0, static_cast<int>(m_pause.count() / 4));
    m_timer->expires_after(m_pause + std::chrono::milliseconds(spread(m_random)));
    m_pause = std::min(m_pause * 2, kLongestPause);
    m_timer->async_wait([this](const std::error_code& error) {
      if (!error) DialNow();
    });
  }

  const std::string m_machine;
  const quor::wire::Role m_role;
  User* const m_user;
  Machine m_to;
  bool m_isRelay = false;
  std::chrono::milliseconds m_deadline{0};
  std::thread m_thread;
  // The link's thread.
  std::unique_ptr<asio::io_context> m_io;  // replaced by null under the mutex, for Post
  std::unique_ptr<asio::steady_timer> m_timer;
  std::shared_ptr<Connection> m_connection;
  bool m_welcomed = false, m_wasUp = false;
  std::chrono::milliseconds m_pause = kFirstPause;
  std::minstd_rand m_random{std::random_device{}()};
  // Guarded.
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_running = false, m_gone = false, m_stopped = false, m_up = false, m_failed = false;
  std::string m_why;
};

ServiceLink::ServiceLink(std::string machine, quor::wire::Role role, User& user)
    : m_core(std::make_shared<Core>(std::move(machine), role, user)) {}

bool ServiceLink::Start(std::chrono::milliseconds deadline, std::string* why) {
  const bool up = m_core->Start(deadline, why);
  if (!up) Stop();
  return up;
}
bool ServiceLink::Await(std::chrono::milliseconds deadline, std::string* why) {
  return m_core->Await(deadline, why);
}
void ServiceLink::Stop() {
  m_core->Stop();
}
void ServiceLink::Post(std::function<void(Connection*)> call) {
  m_core->Post(std::move(call));
}
void ServiceLink::Break(const std::string& reason) {
  m_core->Break(reason);
}
