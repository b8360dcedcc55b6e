#include "quor/publishing/publishing.h"

#include <signal.h>

#include <algorithm>
#include <asio/post.hpp>
#include <random>

#include "quor/log/log.h"

namespace {

constexpr std::chrono::seconds kDialDeadline{2};
constexpr std::size_t kSaidMax = 256;

std::string RandomWord() {
  std::random_device random;
  std::string word;
  for (int i = 0; i < 8; ++i) word.push_back("0123456789abcdef"[random() % 16]);
  return word;
}

std::string Count(std::uint64_t number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

}  // namespace

Publishing::Publishing(PublishingOptions options, MakeEngine makeEngine)
    : m_options(std::move(options)), m_makeEngine(std::move(makeEngine)) {}

Publishing::~Publishing() {
  End();
}

bool Publishing::Open(std::string* why) {
  signal(SIGPIPE, SIG_IGN);
  for (const int number : {SIGTERM, SIGINT, SIGUSR1}) m_signals.add(number);
  std::string damage;
  if (!m_file.Open(m_options.stateFile, &m_state, &damage, why)) return false;
  if (!damage.empty()) Log(LogLevel::Warning, damage + ", another stream begins");
  if (m_state.engineStream != m_options.stream) m_state = {m_options.stream, {}, {}};
  m_engine = m_makeEngine(*this, why);
  if (!m_engine) return false;
  m_publisher =
      std::make_unique<Publisher>(*m_engine, m_options.stream, m_options.machine, RandomWord());
  for (const std::string& line : m_state.sources) m_publisher->Sources().Restore(line);
  m_settings = std::make_unique<SettingsSide>(
      *m_engine, m_options.machine,
      [this](const std::string& line) { Post([this, line] { SayOnce(line); }); });
  return true;
}

void Publishing::Run() {
  AwaitSignal();
  m_settings->Start();
  m_nextCounts = std::chrono::steady_clock::now() + m_options.counts;
  Log(LogLevel::Info, "ready, publishing on " + m_options.stream + " as " + m_options.machine);
  Turn();
  m_io.run();
  End();
  TellCounts();
  Log(LogLevel::Info, "ended");
}

void Publishing::AwaitSignal() {
  m_signals.async_wait([this](const std::error_code& error, int number) {
    if (error) return;
    if (number != SIGUSR1) return m_io.stop();
    TellCounts();
    AwaitSignal();
  });
}

// What is not acknowledged stays with the service, for the next run.
void Publishing::End() {
  {
    const std::lock_guard lock(m_mutex);
    m_ends = true;
  }
  m_hasRoom.notify_all();
  if (m_taker) m_taker->Stop();
  if (m_settings) m_settings->Stop();
  if (m_publisher && m_engine && m_isDirty) Save(std::chrono::steady_clock::now());
  m_engine.reset();
}

template <class Work>
void Publishing::Post(Work work) {
  asio::post(m_io, [this, work = std::move(work)]() mutable {
    work();
    Turn();
  });
}

// All that follows from what has happened, and from the time.
void Publishing::Turn() {
  const Time now = std::chrono::steady_clock::now();
  if (!m_isDialled && now >= m_nextDial) Dial(now);
  m_publisher->Go(now);
  Confirm(now);
  if (m_isDirty && now >= m_nextSave) Save(now);
  TellTrouble();
  if (now >= m_nextCounts) {
    m_nextCounts = now + m_options.counts;
    if (m_publisher->GetCounts().messages != m_told) TellCounts();
  }
  {
    const std::lock_guard lock(m_mutex);
    m_queued = m_publisher->QueuedBytes();
  }
  m_hasRoom.notify_all();
  Time wake = std::min(m_publisher->WakeAt(now), m_nextCounts);
  if (!m_isDialled) wake = std::min(wake, m_nextDial);
  if (m_isDirty) wake = std::min(wake, m_nextSave);
  m_timer.expires_at(wake);
  m_timer.async_wait([this](const std::error_code& error) {
    if (!error) Turn();
  });
}

// Only the first attempt is ours: afterwards the client itself calls again.
void Publishing::Dial(Time now) {
  std::string why;
  Taker::User& user = *this;
  m_taker = std::make_unique<Taker>("localhost", user, m_state.kept.stream);
  m_isDialled = m_taker->Start(kDialDeadline, &why);
  if (m_isDialled) return;
  m_taker.reset();
  m_nextDial = now + m_options.redial;
  if (!std::exchange(m_isServiceAway, true))
    Log(LogLevel::Warning, "the trace service is away: " + why);
}

void Publishing::OnStream(const std::string& id) {
  Post([this, id] { BeginStream(id); });
}

void Publishing::BeginStream(const std::string& id) {
  const bool goesOn = id == m_state.kept.stream;
  TellBack();
  Log(LogLevel::Info,
      goesOn ? "the trace service goes on with its stream" : "the trace service begins a stream");
  m_publisher->BeginStream(id, goesOn ? std::optional(m_state.kept) : std::nullopt);
  m_stream = id;
  m_confirmed = 0;
  // Before anything is confirmed: a run that does not know the stream cannot go on with it.
  Save(std::chrono::steady_clock::now());
}

void Publishing::OnFrame(const TakenFrame& frame) {
  const std::size_t bytes = frame.records.size();
  {
    std::unique_lock lock(m_mutex);
    m_hasRoom.wait(lock, [&] {
      return m_ends || m_coming == 0 || m_coming + m_queued < m_options.queueBytes;
    });
    // From here on nothing of the stream may be taken that comes later.
    if (m_ends) return;
    m_coming += bytes;
  }
  auto parted = std::make_shared<PartedFrame>(PartsOf(frame));
  Post([this, parted, bytes] {
    {
      const std::lock_guard lock(m_mutex);
      m_coming -= bytes;
    }
    TellBack();
    m_publisher->Add(std::move(*parted), std::chrono::steady_clock::now());
    m_isDirty = true;
  });
}

void Publishing::OnGap(std::uint64_t traces) {
  Post([this, traces] {
    m_gaps += traces;
    Log(LogLevel::Warning, Count(traces, "trace") + " were lost with the trace service");
  });
}

void Publishing::OnBroken(const std::string& why) {
  Post([this, why] {
    if (!std::exchange(m_isServiceAway, true))
      Log(LogLevel::Warning, "the trace service is away: " + why);
  });
}

void Publishing::TellBack() {
  if (std::exchange(m_isServiceAway, false)) Log(LogLevel::Info, "the trace service is back");
}

void Publishing::OnAck(std::uint64_t token, const EngineAck& ack) {
  Post([this, token, ack] { m_publisher->OnAck(token, ack, std::chrono::steady_clock::now()); });
}

void Publishing::OnRefused(const std::string& what) {
  Post([this, what] { SayOnce("the engine does not allow it: " + what); });
}

void Publishing::OnDown(const std::string& why) {
  Post([this, why] {
    m_publisher->OnTrouble(why, std::chrono::steady_clock::now());
    m_isEngineAway = true;
    // It calls again and again, and may find different reasons.
    if (m_downs.insert(why).second) Log(LogLevel::Warning, "the engine is away: " + why);
  });
}

void Publishing::OnUp(const std::string& server) {
  Post([this, server] {
    m_publisher->OnUp(std::chrono::steady_clock::now());
    m_isEngineAway = false;
    m_downs.clear();
    Log(LogLevel::Info, "connected to the engine, " + server);
  });
}

// The frames that are stored for good.
void Publishing::Confirm(Time) {
  const Publisher::Kept& taken = m_publisher->Taken();
  if (!m_taker || taken.stream != m_stream || taken.frames <= m_confirmed) return;
  m_confirmed = taken.frames;
  m_isDirty = true;
  m_taker->Taken(taken.stream, taken.frames);
}

void Publishing::Save(Time now) {
  const Publisher::Kept& taken = m_publisher->Taken();
  m_state.kept.stream = m_stream;
  m_state.kept.frames = taken.stream == m_stream ? taken.frames : 0;
  m_state.kept.highest = std::max(m_state.kept.highest, taken.highest);
  m_state.sources = m_publisher->Sources().Lines();
  m_isDirty = false;
  m_nextSave = now + m_options.save;
  std::string why;
  const bool isSaved = m_stream.empty() || m_file.Save(m_state, &why);
  if (!isSaved && !m_isSaveFailing)
    Log(LogLevel::Error, why + "; a run after this one will not go on with the stream");
  m_isSaveFailing = !isSaved;
}

// While the engine is away, why nothing goes is said already.
void Publishing::TellTrouble() {
  const bool isTrouble = !m_publisher->Trouble().empty() && !m_publisher->IsIdle();
  if (m_isEngineAway || isTrouble == m_isTroubleTold) return;
  m_isTroubleTold = isTrouble;
  if (isTrouble)
    Log(LogLevel::Warning, "nothing is published now: " + m_publisher->Trouble());
  else
    Log(LogLevel::Info, "publishing goes on");
}

void Publishing::TellCounts() {
  const Publisher::Counts& counts = m_publisher->GetCounts();
  m_told = counts.messages;
  Log(LogLevel::Info, "published " + Count(counts.messages, "message") + ", " +
                          Count(counts.bytes, "byte") + ": " + Count(counts.delivered, "trace") +
                          ", " + std::to_string(counts.lost + m_gaps) + " lost before; " +
                          std::to_string(counts.repeated) + " sent again, " +
                          std::to_string(m_publisher->QueuedMessages()) + " waiting");
}

void Publishing::SayOnce(const std::string& line) {
  if (m_said.size() < kSaidMax && m_said.insert(line).second) Log(LogLevel::Warning, line);
}
