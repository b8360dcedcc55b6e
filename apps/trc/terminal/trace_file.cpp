#include "terminal/trace_file.h"

#include <chrono>
#include <thread>

#include "documents/load_progress.h"
#include "docview/wnd.h"
#include "records/trc_walk.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

constexpr std::chrono::milliseconds kTimeOfOneWrite(5);

// Takes the load's progress messages in place of the desktop's main frame.
class ProgressWindow final : public CWnd {
 public:
  explicit ProgressWindow(TerminalHost& host) : CWnd(host), m_host(host) {
    host.SetMainWindow(this);
  }
  ~ProgressWindow() override { m_host.SetMainWindow(nullptr); }

  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    if (message != WM_TRACE_PROGRESS) return CWnd::OnMessage(message, wParam, lParam);
    if (wParam == kLoadStart) {
      const auto start = TakeLoadStart(lParam);
      m_caption = start->caption;
      m_size = start->size;
    } else if (wParam == kLoadPosition) {
      m_host.Progress().Show(m_caption, static_cast<std::uint64_t>(lParam), m_size);
    } else if (wParam == kLoadDone) {
      m_host.Progress().Clear();
    }
    return 0;
  }

 private:
  TerminalHost& m_host;
  std::string m_caption;
  std::uint64_t m_size = 0;
};

bool IsOlder(const std::string& path) {
  const auto file = MappedFile::Open(path);
  return file && VersionOf(file->View()) == TrcVersion::Old;
}

bool IsAnswer(int status) {
  return status == kExitGood || status == kExitNo;
}

// True if the file has not changed.
template <class File>
bool ReportChange(const File& file, const std::string& path, const std::string& out) {
  FileChange change = file.Change();
  // While a program appends to a file, the time of the write changes a moment before the bytes.
  if (change.kind == FileChange::Kind::Written) {
    std::this_thread::sleep_for(kTimeOfOneWrite);
    change = file.Change();
  }
  if (!change.Any()) return true;
  PrintError(path + ": changed while it was read: " + FileChangeText(change) +
             (out.empty() ? "" : "; " + out + " is not written"));
  return false;
}

}  // namespace

std::unique_ptr<CTraceFileDoc> OpenTraceFile(TerminalHost& host, const std::string& path,
                                             const TraceLoadSetup& setup,
                                             const std::string& shown) {
  const std::string& name = shown.empty() ? path : shown;
  // The desktop asks whether to convert it. Here nobody can be asked, so the message names the
  // command.
  if (IsOlder(path)) {
    PrintError(name + ": an older trace file format; 'trc convert OLD.trc NEW.trc' converts it");
    return nullptr;
  }
  host.SetSubject(name);
  const unsigned boxes = host.Boxes();
  const ProgressWindow window(host);
  auto document = std::make_unique<CTraceFileDoc>(host, setup);
  if (!document->OnOpenDocument(path)) {
    if (host.Boxes() == boxes) PrintError(name + ": " + document->OpenFailure());
    return nullptr;
  }
  // A failed load shows a box and leaves the flag set.
  host.RunUntil([&] {
    if (Interrupted()) document->CancelEvent()->Set();
    return !document->m_loading || host.Boxes() != boxes;
  });
  if (document->m_loading || Interrupted()) return nullptr;
  // The damage by a change is reported with the change, at the end.
  if (const TrcDamage& damage = document->Damage(); damage.Any() && !document->Change().Any())
    PrintError(name + ": damaged: " + DamageText(damage, true));
  return document;
}

bool IsUnchanged(const MappedFile& file, const std::string& path, const std::string& out) {
  return ReportChange(file, path, out);
}

bool IsUnchanged(const CTraceFileDoc& document, const std::string& path, const std::string& out) {
  return ReportChange(document, path, out);
}

int StatusWithDamage(const CTraceFileDoc& document, int status) {
  return IsAnswer(status) && document.Damage().Any() ? kExitDamaged : status;
}

int StatusOfAnswer(const CTraceFileDoc& document, const std::string& path, int status) {
  if (IsAnswer(status) && !IsUnchanged(document, path)) return kExitDamaged;
  return StatusWithDamage(document, status);
}
