#include "shell/config_frame.h"

#include "settings/registry.h"
#include "shell/main_frame.h"
#include "shell/menus/resource_ids.h"
#include "shell/sizes/stored_size.h"

namespace {

constexpr int kFirstWidthPx = 300, kFirstHeightPx = 300;

}  // namespace

CConfigFrame::CConfigFrame(CMainFrame& parent) : CMDIChildWnd(parent), m_main(parent) {}

void CConfigFrame::PreCreateWindow(int& widthPx, int& heightPx) {
  CMDIChildWnd::PreCreateWindow(widthPx, heightPx);
  widthPx = kFirstWidthPx;
  heightPx = kFirstHeightPx;
  ReadWindowSize(kRegConfigView, widthPx, heightPx);
}

void CConfigFrame::OnSize(SizeType type, int widthPx, int heightPx) {
  CMDIChildWnd::OnSize(type, widthPx, heightPx);
  StoreWindowSize(kRegConfigView, type, widthPx, heightPx);
}

void CConfigFrame::OnContextMenu(int screenXPx, int screenYPx) {
  m_main.Face()->TrackPopupMenu(IDR_CONFIG_POPUP, screenXPx, screenYPx, {});
}
