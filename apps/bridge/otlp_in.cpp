// quor-bridge otlp-in: receives logs and spans of OpenTelemetry for the service of this machine.
#include <signal.h>

#include <asio/signal_set.hpp>

#include "quor/client/link/dial.h"
#include "quor/log/log.h"
#include "quor/otlp/feed/otlp_feed.h"
#include "quor/otlp/receive/otlp_receiver.h"
#include "quor/protocol/tls.h"
#include "usage.h"
#include "verbs.h"

namespace {

constexpr const char* kUsualAddress = "127.0.0.1:4318";
constexpr std::chrono::seconds kDialDeadline{5}, kEndPatience{3};
// The last answers, and the words to the service.
constexpr std::chrono::milliseconds kLastWords{300};

ForwardWay WayToService(asio::io_context& io) {
  // As with a monitor, only the first attempt starts a service.
  auto isFirst = std::make_shared<bool>(true);
  return {"the trace service of this machine", "the trace service is away or too slow",
          [&io, isFirst](Connected done) {
            Dial(io.get_executor(), Machine{}, std::exchange(*isFirst, false), kDialDeadline,
                 std::move(done));
          }};
}

// One run, from its doors to its end by a signal.
class OtlpRun {
 public:
  bool Open(const OtlpDoors& doors, std::string* why) {
    signal(SIGPIPE, SIG_IGN);
    if (!m_receiver.Open(doors, why)) return false;
    for (const int number : {SIGTERM, SIGINT}) m_signals.add(number);
    return true;
  }

  void Run() {
    for (const std::string& address : m_receiver.Addresses())
      Log(LogLevel::Info, "listening on " + address);
    m_forwarder->Start();
    m_feed.Start();
    m_receiver.Start();
    AwaitSignal();
    Log(LogLevel::Info, "ready");
    m_io.run();
  }

 private:
  void AwaitSignal() {
    m_signals.async_wait([this](const std::error_code& error, int) {
      if (error) return;
      if (std::exchange(m_ends, true)) return m_io.stop();  // asked again: at once
      AwaitSignal();
      m_receiver.Stop();
      m_feed.Finish(kEndPatience, [this] { End(); });
    });
  }

  void End() {
    m_forwarder->Stop();
    const OtlpReceiverCounts& came = m_receiver.Counts();
    const OtlpCounts& made = m_feed.Counts();
    Log(LogLevel::Info, "ended: " + std::to_string(came.requests) + " requests, " +
                            std::to_string(came.taken) + " taken, " + std::to_string(came.again) +
                            " came again, " + std::to_string(came.refused) + " refused; " +
                            std::to_string(made.logs) + " logs and " + std::to_string(made.spans) +
                            " spans became " + std::to_string(made.records) + " traces, with " +
                            std::to_string(made.cutTexts + made.cutNames) + " cut texts");
    m_last.expires_after(kLastWords);
    m_last.async_wait([this](const std::error_code&) { m_io.stop(); });
  }

  asio::io_context m_io;
  const std::shared_ptr<Forwarder> m_forwarder =
      std::make_shared<Forwarder>(m_io, WayToService(m_io), LocalHostName());
  OtlpFeed m_feed{m_io, m_forwarder};
  OtlpReceiver m_receiver{m_io, m_feed};
  asio::signal_set m_signals{m_io};
  asio::steady_timer m_last{m_io};
  bool m_ends = false;
};

class OtlpIn final : public Verb {
 public:
  explicit OtlpIn(CLI::App& program)
      : Verb(program, "otlp-in", "Receive logs and spans of OpenTelemetry") {
    App()
        .add_option(
            "--listen", m_listen,
            std::string("Where programs send to; repeatable [default: ") + kUsualAddress + "]")
        ->type_name("ADDRESS:PORT")
        ->allow_extra_args(false);
    App()
        .add_option("--keys-dir", m_tls.keysFolder,
                    "The certificates for addresses of other machines")
        ->type_name("DIR");
    App()
        .add_option("--crl", m_tls.revoked, "Refuse the certificates that these lists (PEM) revoke")
        ->type_name("FILE");
    App()
        .add_option("-l,--log-level", m_level, "error, warning, info, debug [default: info]")
        ->type_name("LEVEL");
    App().footer(
        "Runs until SIGTERM or SIGINT. Programs of this machine send over the loopback.\n"
        "On any other address only programs with a certificate of role forward are\n"
        "received, as \"quord keys issue\" makes it.\n"
        "\n"
        "Examples:\n"
        "  quor-bridge otlp-in\n"
        "  quor-bridge otlp-in --listen 127.0.0.1:4318 --listen 0.0.0.0:4319");
  }

  void Complete() override {
    const std::optional<LogLevel> level = LogLevelOf(m_level);
    if (!level) throw CLI::ValidationError("--log-level", "\"" + m_level + "\" is no level");
    SetLogLevel(*level);
    SetLogName("quor-bridge");
    if (m_listen.empty()) m_listen = {kUsualAddress};
    for (const std::string& text : m_listen) {
      const auto endpoint = EndpointOf(text);
      if (!endpoint) throw CLI::ValidationError("--listen", "\"" + text + "\" is not ADDRESS:PORT");
      (endpoint->address().is_loopback() ? m_doors.plain : m_doors.tls).push_back(text);
    }
    if (m_tls.keysFolder.empty()) m_tls.keysFolder = KeysFolder();
    m_doors.rules = m_tls;
  }

  int Run() override {
    std::string why;
    OtlpRun run;
    if (!run.Open(m_doors, &why)) return Fail(why);
    run.Run();
    return kExitGood;
  }

 private:
  std::vector<std::string> m_listen;
  std::string m_level = "info";
  TlsRules m_tls;
  OtlpDoors m_doors;
};

}  // namespace

std::unique_ptr<Verb> MakeOtlpIn(CLI::App& program) {
  return std::make_unique<OtlpIn>(program);
}
