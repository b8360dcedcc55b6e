#include "shell/mdi/ui/qt_child_frame.h"

#include <QLayout>
#include <QThread>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/qt_control.h"

namespace {

int Wanted(int wantedPx, int roomPx) {
  return wantedPx > 0 ? wantedPx : roomPx * 3 / 4;
}

}  // namespace

QtChildFrame::QtChildFrame(CMDIChildWnd& child, MdiArea& area, int widthPx, int heightPx)
    : m_area(area), m_window(new ChildWindow(child, area)) {
  area.addSubWindow(m_window);
  // A file that the program starts with opens before the main window is shown and lays out its
  // parts.
  if (QLayout* const parts = area.window()->layout()) parts->activate();
  const QSize room = area.contentsRect().size();
  m_window->resize(Wanted(widthPx, room.width()), Wanted(heightPx, room.height()));
}

// The window may be handling an event, even its own close: then it is destroyed after that.
QtChildFrame::~QtChildFrame() {
  if (!m_window) return;
  m_window->Detach();
  m_area.Leave(m_window);
  const bool busy = m_window->IsClosing() || QThread::currentThread()->loopLevel() > 0;
  m_window->hide();
  m_area.removeSubWindow(m_window);
  if (busy) {
    m_window->deleteLater();
  } else {
    delete m_window;
  }
}

void QtChildFrame::SetTitle(const std::string& title) {
  SetPlainTitle(*m_window, QString::fromStdString(title));
}

void QtChildFrame::Show() {
  if (m_window->isVisible()) return;
  if (BeginsMaximised()) {
    m_window->showMaximized();
  } else {
    m_window->show();
    // Qt places a window where it covers the others least, even if that is mostly outside.
    m_window->FitIntoArea();
  }
}

bool QtChildFrame::BeginsMaximised() const {
  const ChildWindow* const active = m_area.Active();
  return active ? active->isMaximized() : m_window->Child()->BeginsMaximised();
}

void QtChildFrame::Activate() {
  if (m_window->isMinimized()) m_window->showNormal();
  m_area.setActiveSubWindow(m_window);
  m_area.OnActivated(m_window);
}

void QtChildFrame::ShowView(CView& view) {
  if (QWidget* control = WidgetOf(view.Control())) m_window->ShowControl(control);
}

void QtChildFrame::ShowBar(ViewControl* bar) {
  if (m_window) m_window->ShowBar(WidgetOf(bar));
}

void QtChildFrame::ShowStrip(ViewControl* strip) {
  if (m_window) m_window->ShowStrip(WidgetOf(strip));
}

void QtChildFrame::ShowBeside(ViewControl* control, BesideEdge edge, int extentPx) {
  if (m_window) m_window->Split().ShowBeside(WidgetOf(control), edge, extentPx);
}
