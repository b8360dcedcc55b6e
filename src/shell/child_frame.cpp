#include "shell/child_frame.h"

#include "settings/registry.h"
#include "shell/command_ids.h"
#include "shell/main_frame.h"
#include "shell/stored_size.h"

CTraceChildFrame::CTraceChildFrame(CMainFrame& parent) : CMDIChildWnd(parent), m_main(parent) {}

void CTraceChildFrame::PreCreateWindow(int& widthPx, int& heightPx) {
  CMDIChildWnd::PreCreateWindow(widthPx, heightPx);
  ReadWindowSize(kRegTraceView, widthPx, heightPx);
}

void CTraceChildFrame::OnSize(SizeType type, int widthPx, int heightPx) {
  CMDIChildWnd::OnSize(type, widthPx, heightPx);
  StoreWindowSize(kRegTraceView, type, widthPx, heightPx);
}

void CTraceChildFrame::OnContextMenu(int screenXPx, int screenYPx) {
  m_main.Face()->TrackPopupMenu(IDR_TRACE_POPUP, screenXPx, screenYPx);
}
