// Pictures of every window, made by the real classes: tessera-shots FOLDER FILE SOURCE.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <clocale>
#include <cstdio>

#include "dialog_scenes.h"
#include "docview/ui/qt_host.h"
#include "monitor_scenes.h"
#include "palette.h"
#include "settings/registry.h"
#include "shell/tessera_app.h"
#include "shell/ui/app_icon.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/qt_shell_faces.h"
#include "shot_scenes.h"
#include "tree_scenes.h"

namespace {

const QSize kWindow(1280, 800);

// The program's icon in the sizes that desktops ask for.
bool SaveIcons(const QString& folder) {
  bool good = true;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
    good &= AppIconPixmap(size).save(QStringLiteral("%1/tessera-%2.png").arg(folder).arg(size));
  return good;
}

void Light(ShotScenes& scenes, DialogScenes& dialogs, const std::string& file,
           const std::string& second) {
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
  scenes.Tiled(second);
}

void Dark(ShotScenes& scenes, DialogScenes& dialogs, const std::string& file,
          const std::string& second) {
  scenes.UseDark();
  scenes.Empty();
  scenes.File(file);
  dialogs.All();
  scenes.PopUp();
  scenes.Options();
  scenes.About();
  scenes.Help({QStringLiteral("list")});
  scenes.Progress(file);
  scenes.Tiled(second);
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
  const QTemporaryDir scratch;
  SetSettingsFile(scratch.filePath(QStringLiteral("settings.ini")).toStdString());
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
  UseFusion(false);
  const QString second = scratch.filePath(QStringLiteral("second.trc"));
  QFile::copy(QString::fromLocal8Bit(argv[2]), second);

  Replay replay(argv[2]);
  QtHost host;
  QtShellFaces faces(host);
  CTesseraApp tessera(host, faces);
  if (!tessera.InitInstance({})) return 2;
  static_cast<QtMainFrame&>(*tessera.Frame()->Face()).Window().resize(kWindow);
  // Absolute: a file dialog makes its folder the current one.
  ShotScenes scenes(tessera, faces, QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
  MonitorScenes monitor(tessera, scenes, replay, scratch.path());
  TreeScenes tree(tessera, scenes, replay, argv[2], scratch.path());
  DialogScenes dialogs(tessera, scenes, QString::fromLocal8Bit(argv[3]), scratch.path());
  Light(scenes, dialogs, argv[2], second.toStdString());
  tessera.CloseAllDocuments();
  monitor.Light();
  tree.Light();
  Dark(scenes, dialogs, argv[2], second.toStdString());
  tessera.CloseAllDocuments();
  monitor.Dark();
  tree.Dark();
  return scenes.Good() ? 0 : 2;
}
