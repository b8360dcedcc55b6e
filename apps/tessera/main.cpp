// The start of the desktop monitor: options, application object, host, event loop.
#include <unistd.h>
#include <QApplication>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "command_line.h"
#include "documents/conversion_under_way.h"
#include "docview/ui/qt_host.h"
#include "palette.h"
#include "render.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "shell/look/ui/app_icon.h"
#include "shell/tessera_app.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/qt_shell_faces.h"
#include "signal_pipe.h"
#include "symbols/stack_naming.h"
#include "symbols/worker/symbol_worker.h"

namespace {

constexpr int kExitWrong = 2;

std::vector<std::string> Arguments(int argc, char** argv) {
  return {argv + 1, argv + argc};
}

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value;
}

bool HasDisplay() {
  return IsSet("QT_QPA_PLATFORM") || IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY");
}

int WrongUse(const std::string& what) {
  std::fprintf(stderr, "tessera: %s\n%s", what.c_str(), UsageText());
  return kExitWrong;
}

// Qt aborts a program that cannot reach its display; here the user gets a message and an exit
// status. Qt's messages without a category are about the platform, and no user can act on them.
void OnQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  const bool remark = !context.category || std::strcmp(context.category, "default") == 0;
  if (remark && type != QtCriticalMsg && type != QtFatalMsg) return;
  std::fprintf(stderr, "tessera: %s\n", qUtf8Printable(text));
  if (type != QtFatalMsg) return;
  std::fflush(stderr);
  _exit(kExitWrong);
}

// The window shows no message for a file that it cannot open; the terminal does.
void ReportWhyNotOpened(const CTesseraApp& tessera, const std::vector<std::string>& arguments) {
  const std::string path = CWinApp::ParseCommandLine(arguments).file;
  const std::string why = tessera.WhyNotOpened(path);
  std::fprintf(stderr, "tessera: %s: %s\n", path.c_str(), why.c_str());
}

int Render(CTesseraApp& tessera, const std::string& path) {
  if (!WaitForLoads(tessera)) {
    std::fprintf(stderr, "tessera: the file is still loading\n");
    return kExitWrong;
  }
  if (!WaitForTraces(tessera)) std::fprintf(stderr, "tessera: few traces came in\n");
  if (RenderMainWindow(tessera, QString::fromStdString(path))) return 0;
  std::fprintf(stderr, "tessera: cannot write %s\n", path.c_str());
  return kExitWrong;
}

int Run(const ProgramOptions& options) {
  QtHost host;
  QtShellFaces faces(host, [] { QCoreApplication::exit(0); });
  CTesseraApp tessera(host, faces);
  // Ends all loops, including those of open dialogs. The end of the application closes the
  // documents, which stops their threads.
  const SignalPipe signalPipe([] {
    ConversionUnderWay::GiveUpAll();
    g_quickClose = true;
    QCoreApplication::exit(0);
  });
  const std::unique_ptr<BoxAnswerer> answerer(options.render.empty() ? nullptr : new BoxAnswerer);
  tessera.m_offerWizard = options.monitor.empty() && options.render.empty();
  const bool started = tessera.InitInstance(options.rest);
  if (signalPipe.Asked()) return 0;
  if (!started) {
    ReportWhyNotOpened(tessera, options.rest);
    return kExitWrong;
  }
  if (!options.monitor.empty() && !tessera.OpenMonitor(options.monitor)) {
    std::fprintf(stderr, "tessera: no trace service on %s\n", options.monitor.c_str());
    return kExitWrong;
  }
  const auto* face = dynamic_cast<QtMainFrame*>(tessera.Frame()->Face());
  if (face && !options.size.isEmpty()) {
    face->Window().showNormal();
    face->Window().resize(options.size);
  }
  return options.render.empty() ? QApplication::exec() : Render(tessera, options.render);
}

}  // namespace

int main(int argc, char** argv) {
  if (IsSymbolWorker(argc, argv)) return RunSymbolWorker(argc, argv);
  ProgramOptions options = ParseProgramOptions(Arguments(argc, argv));
  if (!options.wrong.empty()) return WrongUse(options.wrong);
  if (options.help || options.version) {
    std::printf("%s%s", options.help ? "" : CTesseraApp::kVersionLine,
                options.help ? UsageText() : "\n");
    return 0;
  }
  if (!HasDisplay() && !options.render.empty()) qputenv("QT_QPA_PLATFORM", "offscreen");
  if (!HasDisplay()) {
    std::fprintf(stderr, "tessera: no display (neither DISPLAY nor WAYLAND_DISPLAY is set)\n");
    return kExitWrong;
  }
  qInstallMessageHandler(OnQtMessage);
  QApplication::setApplicationName(QStringLiteral("tessera"));
  QApplication::setApplicationVersion(QStringLiteral(TESSERA_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("tessera"));
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");                       // QApplication sets the user's locale
  options = ParseProgramOptions(Arguments(argc, argv));  // without the options that Qt has removed
  for (const std::string& wrong : {WrongRest(options.rest), UnusableSettings(options.settings)})
    if (!wrong.empty()) return WrongUse(wrong);
  // Only the main frame ends the program: a box that closes before the frame exists must not.
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(AppIcon());
  if (options.dark)
    UseFusion(true);
  else
    UseSystemStyle();
  if (!options.settings.empty()) SetSettingsFile(options.settings);
  ReadStartupSettings();
  g_stackNaming = std::make_unique<StackNaming>(SymbolFolders(), "/proc/self/exe");
  const int status = Run(options);
  g_stackNaming.reset();
  return status;
}
