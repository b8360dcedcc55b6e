#include "tree_scenes.h"

#include "docview/commands/command_ids.h"
#include "records/trc_writer.h"
#include "render.h"
#include "shell/realtime_frame.h"
#include "shell/tessera_app.h"
#include "tree/proc/proc_view.h"

namespace {

constexpr int kDeep = 60;
constexpr std::uint32_t kMillion = 1000000;

// A file with the traces of one thread.
class OneThread {
 public:
  explicit OneThread(const std::string& path)
      : m_names{{1, {"web-01"}}, {2, {"shop"}}, {3, {"4711"}}, {4, {"4712"}}} {
    m_writer.Create(path);
    m_writer.WriteHeader();
  }
  void Add(const std::string& text) {
    ++m_count;
    TraceEvent_i* const event = TraceEvent_i::Create(
        m_count, 1, 2, 5, 6, PackDate(2026, 11, 21), PackTime(9, 41, 7, 123),
        std::uint64_t{1234567} * m_count, 3, 4, kAttributeInfo, 7, 1, text, "");
    m_writer.Write(*event, m_names);
    event->Release();
  }
  void Finish() { m_writer.Finish(); }

 private:
  TrcWriter m_writer;
  NameMap m_names;
  std::uint32_t m_count = 0;
};

// Opens the items on the first path of the tree.
void OpenFirst(CProcView& view, int levels) {
  TreeItem item = view.Tree().Walk(0, TreeStep::FirstChild);
  for (int level = 0; item && level < levels; ++level) {
    view.Tree().Expand(item, true);
    item = view.Tree().Walk(item, TreeStep::FirstChild);
  }
}

}  // namespace

TreeScenes::TreeScenes(CTesseraApp& tessera, ShotScenes& scenes, Replay& traces, std::string file,
                       QString folder)
    : m_tessera(tessera),
      m_scenes(scenes),
      m_traces(traces),
      m_file(std::move(file)),
      m_folder(std::move(folder)) {}

// A file that was shown as a tree before is opened as one.
CProcView& TreeScenes::Tree() {
  const auto active = [this] {
    return dynamic_cast<CProcView*>(m_tessera.Frame()->MDIGetActive()->GetActiveView());
  };
  if (!active()) m_tessera.Frame()->OnCommand(ID_VIEW_PROC);
  return *active();
}

CProcView& TreeScenes::Show(const std::string& path) {
  m_tessera.OpenDocumentFile(path);
  WaitForLoads(m_tessera);
  m_tessera.Frame()->OnCommand(ID_WINDOW_CASCADE);
  return Tree();
}

void TreeScenes::Save(const QString& name) {
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("tree-") + name);
}

void TreeScenes::Close() {
  m_tessera.CloseAllDocuments();
}

void TreeScenes::Small() {
  CProcView& view = Show(m_file);
  OpenFirst(view, 4);
  TreeItem item = view.Tree().Walk(0, TreeStep::FirstChild);
  for (int level = 0; level < 4; ++level) item = view.Tree().Walk(item, TreeStep::FirstChild);
  while (item && !(view.Tree().ItemState(item) & kTreeHasChildren))
    item = view.Tree().Walk(item, TreeStep::NextSibling);
  view.Tree().Expand(item, true);
  view.Tree().SelectItem(view.Tree().Walk(item, TreeStep::FirstChild));
  Save(QStringLiteral("small"));
  m_scenes.Hits(QStringLiteral("tree-hits"));
  Close();
}

void TreeScenes::Deep() {
  const std::string path = m_folder.toStdString() + "/deep.trc";
  OneThread file(path);
  for (int i = 1; i <= kDeep; ++i) file.Add("Begin: level " + std::to_string(i));
  file.Add(
      "the innermost trace of all, with a text that goes on for longer than any window is wide, "
      "so that it is read by scrolling across or in the properties of the trace");
  for (int i = 1; i <= kDeep; ++i) file.Add("End: ");
  file.Finish();
  CProcView& view = Show(path);
  OpenFirst(view, 4);
  Save(QStringLiteral("deep-closed"));
  CTraceHint hint(view.Document().m_traces[kDeep]);
  view.OnUpdate(nullptr, kHintFollow, &hint);
  Save(QStringLiteral("deep"));
  Close();
}

void TreeScenes::Million() {
  const std::string path = m_folder.toStdString() + "/million.trc";
  OneThread file(path);
  for (std::uint32_t i = 1; i <= kMillion; ++i) file.Add("order " + std::to_string(i) + " taken");
  file.Finish();
  CProcView& view = Show(path);
  OpenFirst(view, 4);
  CTraceHint hint(view.Document().m_traces[kMillion / 2]);
  view.OnUpdate(nullptr, kHintFollow, &hint);
  Save(QStringLiteral("million"));
  Close();
}

void TreeScenes::Live() {
  m_tessera.OpenMonitor("web-03");
  auto& frame = static_cast<CTraceRealtimeFrame&>(*m_tessera.Frame()->MDIGetActive());
  m_tessera.Frame()->OnCommand(ID_WINDOW_CASCADE);
  m_traces.Arrive(400);
  frame.OnTimer(TRACE_TIMER_ID);
  OpenFirst(Tree(), 4);
  for (int tick = 0; tick < 3; ++tick) {
    m_traces.Arrive(200);
    frame.OnTimer(TRACE_TIMER_ID);
  }
  Save(QStringLiteral("live"));
  m_tessera.MonitorTemplate()->CloseAllDocuments();
}

void TreeScenes::Light() {
  Small();
  Deep();
  Million();
  Live();
}

void TreeScenes::Dark() {
  Small();
  Live();
}
