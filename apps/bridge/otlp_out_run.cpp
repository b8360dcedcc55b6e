#include "otlp_out_run.h"

#include <signal.h>

#include <asio/post.hpp>
#include <ctime>
#include <random>

#include "base/fail_with.h"
#include "quor/log/log.h"
#include "quor/protocol/machine.h"

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds kServiceDeadline = 5s;
// How long the requests that wait at a signal may take. What is left comes again to the next run.
constexpr std::chrono::milliseconds kLastPatience = 3s;

std::string Traces(std::uint64_t number) {
  return std::to_string(number) + " traces";
}

}  // namespace

OtlpOutRun::OtlpOutRun(OtlpOutPlan plan)
    : m_plan(std::move(plan)),
      m_sender(
          LocalHostName(), {},
          [this](const std::string& words) {
            asio::post(m_io, [words] { Log(LogLevel::Warning, words); });
          },
          std::random_device()()) {}

OtlpOutRun::~OtlpOutRun() {
  if (m_taker) m_taker->Stop();
}

bool OtlpOutRun::OpenState(std::string* id, std::string* why) {
  std::string bytes;
  if (!m_file.Open(m_plan.state, &bytes, why)) return false;
  if (bytes.empty()) return true;
  // An overwritten file of something else could not be brought back.
  if (!m_sender.Resume(bytes))
    return FailWith(why, m_plan.state + ": it is no state of otlp-out, or a damaged one");
  *id = m_sender.Stream();
  return true;
}

bool OtlpOutRun::Start(std::string* why, bool* isNotReached) {
  signal(SIGPIPE, SIG_IGN);
  std::shared_ptr<asio::ssl::context> tls;
  if (m_plan.collector.tls && !(tls = MakeWebTls(m_plan.trust, why))) return false;
  std::string id;
  if (!OpenState(&id, why)) return false;
  m_client = std::make_unique<HttpClient>(m_io, m_plan.collector, std::move(tls));
  for (const int number : {SIGTERM, SIGINT}) m_signals.add(number);
  m_taker = std::make_unique<Taker>("", static_cast<Taker::User&>(*this), id);
  *isNotReached = !m_taker->Start(kServiceDeadline, why);
  return !*isNotReached;
}

void OtlpOutRun::Run() {
  AwaitSignal();
  Log(LogLevel::Info, "ready: sending to " + m_plan.collector.Authority());
  Go();
  m_io.run();
}

void OtlpOutRun::AwaitSignal() {
  m_signals.async_wait([this](const std::error_code& error, int) {
    if (error) return;
    if (m_endAt) return m_io.stop();  // asked again: at once
    AwaitSignal();
    m_endAt = Clock::now() + (m_trouble.empty() ? kLastPatience : 0ms);
    {
      const std::lock_guard lock(m_mutex);
      m_ends = true;
      m_sender.Flush(Clock::now());
    }
    Go();
  });
}

void OtlpOutRun::OnStream(const std::string& id) {
  std::uint64_t confirmed = 0;
  {
    const std::lock_guard lock(m_mutex);
    m_sender.BeginStream(id, Clock::now());
    confirmed = m_sender.Confirmed();
  }
  asio::post(m_io, [] { Log(LogLevel::Info, "taking the traces of the service"); });
  // A process that was killed may have stored a number that it could not say any more.
  m_taker->Taken(id, confirmed);
  Wake();
}

void OtlpOutRun::OnFrame(const TakenFrame& frame) {
  {
    const std::lock_guard lock(m_mutex);
    // Whoever goes on with the stream gets it again.
    if (m_ends) return;
    m_sender.Add(frame, Clock::now());
  }
  Wake();
}

void OtlpOutRun::OnGap(std::uint64_t traces) {
  {
    const std::lock_guard lock(m_mutex);
    m_sender.AddGap(traces, Clock::now());
  }
  asio::post(m_io, [traces] {
    Log(LogLevel::Warning, Traces(traces) + " lost: the service was started anew");
  });
  Wake();
}

void OtlpOutRun::OnBroken(const std::string& why) {
  asio::post(m_io, [why] { Log(LogLevel::Warning, "the service is away: " + why); });
}

void OtlpOutRun::Wake() {
  const std::lock_guard lock(m_mutex);
  if (!std::exchange(m_isWoken, true)) asio::post(m_io, [this] { Go(); });
}

void OtlpOutRun::Go() {
  Store();
  Send();
  Arm();
}

void OtlpOutRun::Store() {
  std::optional<FrameSender::Stored> stored;
  {
    const std::lock_guard lock(m_mutex);
    m_isWoken = false;
    stored = m_sender.TakeState();
  }
  if (!stored) return;
  std::string why;
  if (m_file.Write(stored->bytes, &why))
    m_taker->Taken(stored->stream, stored->frames);
  else if (why != m_fileTrouble)
    Log(LogLevel::Error, "the state cannot be stored, so nothing is confirmed: " + why);
  m_fileTrouble = why;
}

void OtlpOutRun::Send() {
  const SendQueue::Request* request = nullptr;
  {
    const std::lock_guard lock(m_mutex);
    request = m_sender.Next(Clock::now());
  }
  if (!request) return;
  std::string headers = "Content-Type: application/x-protobuf\r\n";
  if (request->isPacked) headers += "Content-Encoding: gzip\r\n";
  headers += m_plan.headers;
  const bool isLogs = request->kind == OutRequest::Kind::Logs;
  m_client->Post({isLogs ? "/v1/logs" : "/v1/traces", headers, request->body},
                 [this](HttpResult result) {
                   std::string trouble;
                   {
                     const std::lock_guard lock(m_mutex);
                     m_sender.Answer(result, Clock::now(), std::time(nullptr));
                     trouble = m_sender.Queue().Trouble();
                   }
                   SayTrouble(trouble);
                   Go();
                 });
}

void OtlpOutRun::SayTrouble(const std::string& trouble) {
  if (trouble == m_trouble) return;
  if (trouble.empty())
    Log(LogLevel::Info, "the collector takes traces again");
  else
    Log(LogLevel::Warning, trouble + "; it is asked again");
  m_trouble = trouble;
}

void OtlpOutRun::Arm() {
  std::optional<Clock::time_point> at;
  bool isIdle = false;
  {
    const std::lock_guard lock(m_mutex);
    at = m_sender.WakeAt();
    isIdle = m_sender.IsIdle();
  }
  if (m_endAt && (isIdle || Clock::now() >= *m_endAt)) return End();
  if (m_endAt) at = at ? std::min(*at, *m_endAt) : *m_endAt;
  m_timer.cancel();
  if (!at) return;
  m_timer.expires_at(*at);
  m_timer.async_wait([this](const std::error_code& error) {
    if (!error) Go();
  });
}

void OtlpOutRun::End() {
  m_client->Stop();
  m_taker->Stop();
  const std::lock_guard lock(m_mutex);
  Log(LogLevel::Info, "ended: the collector took " + Traces(m_sender.Queue().Taken()) + "; " +
                          Traces(m_sender.Lost()) + " were lost on the way, " +
                          std::to_string(m_sender.Unreported()) + " of them not reported yet");
  m_io.stop();
}
