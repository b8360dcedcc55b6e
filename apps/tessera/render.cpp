#include "render.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMessageBox>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <cstdio>

#include "documents/trace_doc.h"
#include "docview/commands/command_ids.h"
#include "shell/tessera_app.h"
#include "shell/ui/qt_main_frame.h"

namespace {

constexpr int kLookMs = 20;
constexpr qint64 kPatienceMs = 600'000;
constexpr qint64 kTracePatienceMs = 10'000;

void AnswerBox() {
  auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  if (!dialog) return;
  const auto* box = qobject_cast<const QMessageBox*>(dialog);
  const QString text = box ? box->text() : dialog->windowTitle();
  std::fprintf(stderr, "tessera: %s\n", qUtf8Printable(text));
  dialog->reject();
}

bool Loading(const CTesseraApp& tessera) {
  if (tessera.Frame()->LoadStatus()) return true;
  for (const auto& document : tessera.FileTemplate()->Documents()) {
    const auto* traces = dynamic_cast<const CTraceDoc*>(document.get());
    if (traces && traces->m_loading) return true;
  }
  return false;
}

}  // namespace

BoxAnswerer::BoxAnswerer() : m_timer(new QTimer) {
  QObject::connect(m_timer, &QTimer::timeout, AnswerBox);
  m_timer->start(kLookMs);
}

BoxAnswerer::~BoxAnswerer() {
  delete m_timer;
}

bool WaitForLoads(CTesseraApp& tessera) {
  QElapsedTimer clock;
  clock.start();
  int quiet = 0;  // consecutive checks without a load: the window paints and updates in between
  while (quiet < 3 && clock.elapsed() < kPatienceMs) {
    QEventLoop loop;
    QTimer::singleShot(kLookMs, &loop, &QEventLoop::quit);
    loop.exec();
    quiet = Loading(tessera) ? 0 : quiet + 1;
  }
  return quiet >= 3;
}

bool WaitForTraces(CTesseraApp& tessera) {
  constexpr std::size_t kEnough = 100;  // more than a page
  QElapsedTimer clock;
  clock.start();
  const auto enough = [&tessera] {
    for (const auto& document : tessera.MonitorTemplate()->Documents()) {
      const auto* traces = dynamic_cast<const CTraceDoc*>(document.get());
      if (traces && traces->m_traces.size() < kEnough) return false;
    }
    return true;
  };
  while (!enough() && clock.elapsed() < kTracePatienceMs) {
    QEventLoop loop;
    QTimer::singleShot(kLookMs, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return enough();
}

bool RenderMainWindow(CTesseraApp& tessera, const QString& path) {
  const auto* face = dynamic_cast<const QtMainFrame*>(tessera.Frame()->Face());
  if (!face) return false;
  // One window fills the area.
  tessera.Frame()->OnCommand(ID_WINDOW_TILE_HORZ);
  // Its new size reaches the scroll bars in later turns of the loop.
  WaitForLoads(tessera);
  face->Actions().UpdateAll();
  return face->Window().grab().save(path, "PNG");
}
