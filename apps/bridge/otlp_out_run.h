// The run of quor-bridge otlp-out: traces of this machine's service to a collector.
//
// Shape    Frames come on the taker's thread and become requests there. The run's own thread posts
//          the requests, stores the state behind what the collector has, and then confirms it to
//          the service.
// Errors   Start: false and a reason, and whether the service was not reached. Later ones are
//          logged, each once until it is over.
// Threads  The one that makes it.
#pragma once

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <mutex>

#include "quor/client/taker/taker.h"
#include "quor/http/client/http_client.h"
#include "quor/otlp/send/frame_sender.h"
#include "quor/otlp/send/state_file.h"

struct OtlpOutPlan {
  WebAddress collector;
  WebTrust trust;
  std::string headers;  // further lines, each ended by CR LF; secret
  std::string state;    // a file
};

class OtlpOutRun final : private Taker::User {
 public:
  explicit OtlpOutRun(OtlpOutPlan plan);
  ~OtlpOutRun();

  bool Start(std::string* why, bool* isNotReached);
  // Until a signal ends it.
  void Run();

 private:
  using Clock = std::chrono::steady_clock;
  void OnStream(const std::string& id) override;
  void OnFrame(const TakenFrame& frame) override;
  void OnGap(std::uint64_t traces) override;
  void OnBroken(const std::string& why) override;
  bool OpenState(std::string* id, std::string* why);
  void AwaitSignal();
  void Wake();
  void Go();
  void Store();
  void Send();
  void SayTrouble(const std::string& trouble);
  void Arm();
  void End();

  const OtlpOutPlan m_plan;
  asio::io_context m_io;
  asio::signal_set m_signals{m_io};
  asio::steady_timer m_timer{m_io};
  std::unique_ptr<HttpClient> m_client;
  StateFile m_file;
  std::unique_ptr<Taker> m_taker;
  std::string m_trouble, m_fileTrouble;
  std::optional<Clock::time_point> m_endAt;  // a signal has come
  // Guarded.
  std::mutex m_mutex;
  FrameSender m_sender;
  bool m_isWoken = false, m_ends = false;
};
