#include "monitor_scenes.h"

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>

#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "shell/realtime_frame.h"
#include "shell/tessera_app.h"

namespace {

constexpr std::uint32_t kLimit = 2500;
constexpr std::size_t kPages = 600;  // traces, more than a page

}  // namespace

MonitorScenes::MonitorScenes(CTesseraApp& tessera, ShotScenes& scenes, Replay& traces,
                             QString folder)
    : m_tessera(tessera), m_scenes(scenes), m_traces(traces), m_folder(std::move(folder)) {
  m_tessera.m_connectMonitor = m_traces.Connector();
}

CTraceRealtimeFrame& MonitorScenes::Frame() {
  return static_cast<CTraceRealtimeFrame&>(*m_tessera.Frame()->MDIGetActive());
}

CTraceView& MonitorScenes::List() {
  return static_cast<CTraceView&>(*Frame().GetActiveView());
}

void MonitorScenes::Open() {
  m_tessera.OpenMonitor("web-03");
  m_tessera.Frame()->OnCommand(ID_WINDOW_CASCADE);
}

void MonitorScenes::Close() {
  m_tessera.MonitorTemplate()->CloseAllDocuments();
}

void MonitorScenes::Take(std::size_t traces) {
  m_traces.Arrive(traces);
  Frame().OnTimer(TRACE_TIMER_ID);
}

void MonitorScenes::Save(const QString& name) {
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("monitor-") + name);
}

void MonitorScenes::Query() {
  m_scenes.SaveModal(ID_FILE_NEWMONITOR, QStringLiteral("monitor-query"));
}

// Answers the file dialog like a user; the menu then shows the check mark.
void MonitorScenes::Capturing() {
  const QString before = QDir::currentPath();
  m_scenes.Answer([this](QWidget& dialog) {
    auto* const files = qobject_cast<QFileDialog*>(&dialog);
    if (!files) {
      dialog.close();
      return;
    }
    files->setDirectory(m_folder);
    files->findChild<QLineEdit*>()->setText(QStringLiteral("noon.trc"));
    m_scenes.Save(*files, QStringLiteral("monitor-capture-dialog"));
    static_cast<QDialog*>(files)->accept();
  });
  m_tessera.Frame()->OnCommand(ID_FILE_CAPTURE);
  Take(kPages);
  Save(QStringLiteral("capturing"));
  m_scenes.SaveMenu(QStringLiteral("File"), QStringLiteral("monitor-capturing-menu"));
  m_tessera.Frame()->OnCommand(ID_FILE_CAPTURE);
  QDir::setCurrent(before);  // the dialog has changed the current folder
}

void MonitorScenes::Filtered() {
  CTraceFilter warnings = List().m_filter;
  warnings.allTraces = 0;
  warnings.allSeverities = 0;
  warnings.severities = {0, 1, 1};
  List().SetFilter(warnings, true);
  Take(kPages);
  Save(QStringLiteral("filtered"));
  List().SetFilter(CTraceFilter(), true);
}

void MonitorScenes::AtTheLimit() {
  const std::uint32_t before = std::exchange(g_traceLimit, kLimit);
  for (int drain = 0; drain < 6; ++drain) Take(kLimit / 2);
  Save(QStringLiteral("at-the-limit"));
  g_traceLimit = before;
}

void MonitorScenes::Light() {
  Query();
  Open();
  Save(QStringLiteral("empty"));
  Take(kPages);
  Save(QStringLiteral("running"));
  m_tessera.Frame()->OnCommand(ID_VIEW_PAUSE);
  Save(QStringLiteral("paused"));
  m_scenes.SaveMenu(QStringLiteral("View"), QStringLiteral("monitor-paused-menu"));
  m_tessera.Frame()->OnCommand(ID_VIEW_PAUSE);
  Capturing();
  Filtered();
  AtTheLimit();
  Close();
}

void MonitorScenes::Dark() {
  Query();
  Open();
  Save(QStringLiteral("empty"));
  Take(kPages);
  m_tessera.Frame()->OnCommand(ID_VIEW_PAUSE);
  Save(QStringLiteral("paused"));
  m_tessera.Frame()->OnCommand(ID_VIEW_PAUSE);
  Filtered();
  Close();
}
