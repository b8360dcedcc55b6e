#include "documents/trace_file_load.h"

#include <algorithm>
#include <utility>

#include "documents/conversion_under_way.h"
#include "documents/load_progress.h"
#include "documents/trace_file_conversion.h"
#include "documents/trace_hint.h"
#include "docview/wnd.h"
#include "records/trc_walk.h"

namespace {
// On the interface thread. False when there is no main window.
bool NotifyMainWindow(const Host& host, LoadProgress what, std::intptr_t value) {
  CWnd* const window = host.MainWindow();
  if (window) window->SendMessage(WM_TRACE_PROGRESS, what, value);
  return window != nullptr;
}
}  // namespace

// What the walkers of the file find, put together.
class TraceFileLoad::Parts final : public TrcParts {
 public:
  Parts(TraceFileLoad& load, const TrcWalkers& walkers)
      : m_load(load), m_bytesPerPost(walkers.count > 1 ? load.m_file->Size() / kPosts : 0) {}

  std::unique_ptr<TrcPart> NewPart(std::uint64_t from, std::uint64_t limit) override {
    auto part = std::make_unique<TracePart>(limit > from ? limit - from : 0, *m_load.m_file);
    if (m_load.m_search) part->Search(*m_load.m_search);
    return part;
  }
  void Take(TrcPart& taken) override {
    auto& part = static_cast<TracePart&>(taken);
    if (m_load.m_search) m_load.m_search->Take(*part.SearchPiece(), m_load.m_found.traces.size());
    m_load.m_found.Append(part);
  }
  bool OnProgress(std::uint64_t bytes) override {
    if (m_load.m_cancelEvent->IsSet()) return false;
    const std::unique_lock lock(m_posting, std::try_to_lock);
    if (lock && bytes >= m_postAt) {
      m_load.PostPosition(bytes, false);
      m_postAt = bytes + m_bytesPerPost;
    }
    return true;
  }

 private:
  static constexpr std::uint64_t kPosts = 500;  // of a load that is over in a moment

  TraceFileLoad& m_load;
  const std::uint64_t m_bytesPerPost;
  std::mutex m_posting;
  std::uint64_t m_postAt = 0;
};

TraceFileLoad::TraceFileLoad(Host& host, std::shared_ptr<const MappedFile> file, std::string path,
                             HANDLE cancelEvent, std::shared_ptr<LoadSearch> search)
    : m_file(std::move(file)),
      m_host(host),
      m_path(std::move(path)),
      m_cancelEvent(std::move(cancelEvent)),
      m_search(std::move(search)) {}

void TraceFileLoad::Run(const std::function<void()>& beforeWalk) {
  try {
    const bool older = VersionOf(m_file->View()) == TrcVersion::Old;
    if (older && !Convert(beforeWalk)) return Fail();
    Walk(beforeWalk);
  } catch (...) {
    Fail();
  }
}

void TraceFileLoad::Fail() {
  m_failed = true;
  m_found.traces.Clear();  // the failure may be a lack of memory
  m_file.reset();
  m_oldFile.reset();
  const std::lock_guard lock(m_hostMutex);
  const bool silent = m_detached || m_givenUp;
  if (!silent) m_host.PostBox({"Error opening trace file", BoxIcon::Stop, BoxButtons::Ok}, {});
}

bool TraceFileLoad::Convert(const std::function<void()>& beforeWalk) {
  PostStart("Converting...");
  if (beforeWalk) beforeWalk();
  ConversionCallbacks callbacks;
  callbacks.progress = [this](std::uint64_t position, bool last) {
    m_givenUp = m_givenUp || ConversionUnderWay::AllGivenUp();
    if (m_givenUp) return ConversionControl::Abandon;
    if (!last && m_cancelEvent->IsSet()) return ConversionControl::Stop;
    PostPosition(position, last);
    return ConversionControl::Continue;
  };
  callbacks.showMessage = [this](const char* text, BoxIcon icon) { ShowMessage(text, icon); };
  const ConversionUnderWay underWay;
  std::shared_ptr<const MappedFile> converted =
      ConvertTraceFile(*m_file, m_path, callbacks, &m_conversion);
  m_oldFile = std::exchange(m_file, std::move(converted));
  m_oldFile->CloseFile();
  return m_file != nullptr;
}

void TraceFileLoad::Walk(const std::function<void()>& beforeWalk) {
  PostStart("Loading...");
  if (beforeWalk) beforeWalk();
  const TrcWalkers walkers = TrcWalkers::For(m_file->Size());
  Parts parts(*this, walkers);
  const std::uint64_t reached = WalkTrcTogether(m_file->View(), walkers, parts);
  PostPosition(reached, true);
  PostDone();
  Post([self = shared_from_this()] {
    if (const auto handOver = std::exchange(self->m_handOver, nullptr)) handOver();
  });
}

void TraceFileLoad::Detach() {
  m_handOver = nullptr;
  const std::lock_guard lock(m_hostMutex);
  m_host.Post([&host = m_host] { NotifyMainWindow(host, kLoadDone, 0); });
  m_detached = true;
}

// The box blocks no window and not the interface thread: only this thread waits. After a cancel it
// does not wait either, because the interface thread may be waiting for it.
void TraceFileLoad::ShowMessage(const char* text, BoxIcon icon) {
  const HANDLE read = CreateEvent();
  {
    const std::lock_guard lock(m_hostMutex);
    if (m_detached) return;
    m_host.PostBox({text, icon, BoxButtons::Ok}, [read] { read->Set(); });
    if (m_cancelEvent->IsSet()) return;
    m_boxRead = read;
  }
  constexpr unsigned kDayMs = 86'400'000;
  while (!read->Wait(kDayMs)) {
  }
}

void TraceFileLoad::StopWaiting() {
  const std::lock_guard lock(m_hostMutex);
  if (m_boxRead) m_boxRead->Set();
}

void TraceFileLoad::PostStart(const char* caption) {
  Post(
      [&host = m_host, start = CLoadProgressStart{caption, m_path, m_file->Size(), m_cancelEvent}] {
        auto record = std::make_unique<CLoadProgressStart>(start);
        const auto value = reinterpret_cast<std::intptr_t>(record.get());
        if (NotifyMainWindow(host, kLoadStart, value)) (void)record.release();
      });
}

void TraceFileLoad::PostPosition(std::uint64_t position, bool last) {
  if (!last && m_waitingPositions.load(std::memory_order_relaxed) >= kWaitingPositions) return;
  m_waitingPositions.fetch_add(1, std::memory_order_relaxed);
  // A record that the end of the file cuts moves the position beyond the end.
  const std::uint64_t shown = std::min<std::uint64_t>(position, m_file->Size());
  Post([self = shared_from_this(), shown] {
    self->m_waitingPositions.fetch_sub(1, std::memory_order_relaxed);
    NotifyMainWindow(self->m_host, kLoadPosition, static_cast<std::intptr_t>(shown));
  });
}

void TraceFileLoad::PostDone() {
  Post([&host = m_host] { NotifyMainWindow(host, kLoadDone, 0); });
}

void TraceFileLoad::Post(std::function<void()> call) {
  const std::lock_guard lock(m_hostMutex);
  if (!m_detached) m_host.Post(std::move(call));
}
