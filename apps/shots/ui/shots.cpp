// Pictures of every window, made by the real classes: tessera-shots FOLDER FILE SOURCE.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QScreen>
#include <QTemporaryDir>
#include <clocale>
#include <cstdio>

#include "beside_scenes.h"
#include "config_scenes.h"
#include "config_window_scenes.h"
#include "dialog_scenes.h"
#include "docview/ui/qt_host.h"
#include "filter_scenes.h"
#include "monitor_scenes.h"
#include "palette.h"
#include "settings/registry.h"
#include "shell/look/ui/app_icon.h"
#include "shell/tessera_app.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/qt_shell_faces.h"
#include "shot_scenes.h"
#include "tree_scenes.h"
#include "wizard_scenes.h"

namespace {

const QSize kWindow(1280, 800);

// The program's icon in the sizes that desktops ask for.
bool SaveIcons(const QString& folder) {
  bool good = true;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
    good &= AppIconPixmap(size).save(QStringLiteral("%1/tessera-%2.png").arg(folder).arg(size));
  return good;
}

// The home folder that dialogs and status bar show: neutral, not the user's own.
QString MakeHome(const QTemporaryDir& scratch) {
  QString home = scratch.filePath(QStringLiteral("ada"));
  QDir().mkdir(home);
  qputenv("HOME", QFile::encodeName(home));
  // Nor are the views that the user's own windows had.
  qunsetenv("XDG_STATE_HOME");
  return home;
}

QString CopyTo(const QString& folder, const char* from, const char* name) {
  QString path = folder + QLatin1Char('/') + QLatin1String(name);
  QFile::copy(QString::fromLocal8Bit(from), path);
  return path;
}

void Light(ShotScenes& scenes, DialogScenes& dialogs, FilterScenes& filter, BesideScenes& beside,
           const std::string& file, const std::string& second) {
  scenes.Empty();
  scenes.File(file);
  scenes.Menu();
  dialogs.All();
  scenes.PopUp();
  scenes.Maximised();
  scenes.Options();
  scenes.About();
  scenes.Help(HelpWindow::Topics());
  scenes.Progress(file);
  scenes.Hits(QStringLiteral("main-hits"));
  beside.Details();
  beside.Hits();
  filter.Reading();
  filter.Statistics();
  filter.Marks();
  filter.Overview();
  filter.All();
  scenes.Tiled(second);
}

void Dark(ShotScenes& scenes, DialogScenes& dialogs, FilterScenes& filter, BesideScenes& beside,
          const std::string& file, const std::string& second) {
  scenes.UseDark();
  scenes.Empty();
  scenes.File(file);
  dialogs.All();
  scenes.PopUp();
  scenes.Options();
  scenes.About();
  scenes.Help({QStringLiteral("list"), QStringLiteral("wizard")});
  scenes.Progress(file);
  scenes.Hits(QStringLiteral("main-hits"));
  beside.Details();
  beside.Hits();
  filter.Reading();
  filter.Statistics();
  filter.Marks();
  filter.Overview();
  filter.All();
  scenes.Tiled(second);
}

// The windows that configure applications. On a scaled screen only these are shown.
class Configuring {
 public:
  Configuring(CTesseraApp& tessera, ShotScenes& scenes)
      : m_tessera(tessera),
        m_pages(tessera, scenes),
        m_window(tessera, scenes),
        m_wizard(tessera, scenes) {}
  void All() {
    m_pages.All();
    m_tessera.CloseAllDocuments();
    m_window.All();
    m_wizard.All();
  }

 private:
  CTesseraApp& m_tessera;
  ConfigScenes m_pages;
  ConfigWindowScenes m_window;
  WizardScenes m_wizard;
};

void Scaled(ShotScenes& scenes, DialogScenes& dialogs, FilterScenes& filter, BesideScenes& beside,
            Configuring& configuring, const std::string& file) {
  scenes.SetMark(QStringLiteral("-%1").arg(qRound(scenes.Window().devicePixelRatioF() * 100)));
  scenes.File(file);
  scenes.Hits(QStringLiteral("main-hits"));
  beside.Details();
  beside.Hits();
  filter.Reading();
  filter.Statistics();
  filter.Marks();
  filter.Overview();
  filter.All();
  dialogs.Colours();
  dialogs.Times();
  dialogs.Profiles();
  configuring.All();
  scenes.UseDark();
  scenes.File(file);
  scenes.Hits(QStringLiteral("main-hits"));
  beside.Details();
  beside.Hits();
  filter.Reading();
  filter.Statistics();
  filter.Marks();
  filter.Overview();
  filter.All();
  dialogs.Colours();
  dialogs.Times();
  dialogs.Profiles();
  configuring.All();
}

// Every scene into the folder, with copies of a trace file and of a source file.
int SaveScenes(const QString& into, const char* traceFile, const char* sourceFile) {
  const QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/home-XXXXXX"));
  const QString folder = QDir(into).absolutePath();
  const QString home = MakeHome(scratch), source = CopyTo(home, sourceFile, "shop.cpp");
  const std::string file = CopyTo(home, traceFile, "sample.trc").toStdString();
  const std::string second = CopyTo(home, traceFile, "second.trc").toStdString();
  QDir::setCurrent(home);  // where file dialogs begin
  SetSettingsFile(scratch.filePath(QStringLiteral("settings.ini")).toStdString());
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
  UseFusion(false);

  Replay replay(file);
  QtHost host;
  QtShellFaces faces(host);
  CTesseraApp tessera(host, faces);
  if (!tessera.InitInstance({})) return 2;
  QWidget& window = static_cast<QtMainFrame&>(*tessera.Frame()->Face()).Window();
  window.resize(kWindow.boundedTo(window.screen()->availableSize()));
  ShotScenes scenes(tessera, faces, folder);
  MonitorScenes monitor(tessera, scenes, replay, home);
  TreeScenes tree(tessera, scenes, replay, file, scratch.path());
  DialogScenes dialogs(tessera, scenes, source, home);
  FilterScenes filter(tessera, scenes);
  BesideScenes beside(tessera, scenes);
  Configuring configuring(tessera, scenes);
  if (window.devicePixelRatioF() > 1) {
    Scaled(scenes, dialogs, filter, beside, configuring, file);
    return scenes.Good() ? 0 : 2;
  }
  Light(scenes, dialogs, filter, beside, file, second);
  configuring.All();
  ReadingScenes(tessera, scenes).Empty(home.toStdString() + "/empty.trc");
  monitor.Light();
  tree.Light();
  Dark(scenes, dialogs, filter, beside, file, second);
  configuring.All();
  monitor.Dark();
  tree.Dark();
  return scenes.Good() ? 0 : 2;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(AppIcon());
  if (argc == 3 && QLatin1String(argv[1]) == QLatin1String("--icons"))
    return SaveIcons(QString::fromLocal8Bit(argv[2])) ? 0 : 2;
  if (argc != 4) {
    std::fprintf(stderr, "usage: tessera-shots FOLDER FILE SOURCE | --icons FOLDER\n");
    return 2;
  }
  return SaveScenes(QString::fromLocal8Bit(argv[1]), argv[2], argv[3]);
}
