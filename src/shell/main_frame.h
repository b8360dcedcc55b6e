// The top window: tool bar, status panes, progress box, stored size, Quick Close.
//
// Threads  Interface thread; the load threads reach it by posted WM_TRACE_PROGRESS only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "docview/frame.h"
#include "shell/faces.h"
#include "shell/load_status.h"

class CTesseraApp;

class CMainFrame : public CMDIFrameWnd {
 public:
  explicit CMainFrame(CTesseraApp& app);
  ~CMainFrame() override;

  // Makes the window with its bars; both custom panes are emptied. False: there is no window.
  bool LoadFrame();
  void OnSize(SizeType type, int widthPx, int heightPx);
  // WM_CLOSE: may ask the Quick Close question, then asks the documents, then closes.
  void OnClose();
  void OnDropFiles(const std::vector<std::string>& paths);

  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;
  std::unique_ptr<ChildFrameFace> CreateChildFace(CMDIChildWnd& child, int widthPx,
                                                  int heightPx) override;
  void LayOutChildren(WindowLayout layout) override;
  void OnActiveChild(CMDIChildWnd* child) override;
  void UpdateTitle() override;  // "Tessera", "Tessera - [web.trc]" when a child is maximised

  CLoadStatus* LoadStatus() const { return m_loadStatus.get(); }
  MainFrameFace* Face() const { return m_face.get(); }
  bool m_childMaximised = false;  // told by the face, with UpdateTitle

 private:
  void OnTraceRowCount(std::intptr_t count);
  void OnTraceFiltered(std::intptr_t filtered);
  void OnTraceProgress(std::uintptr_t what, std::intptr_t value);

  CTesseraApp& m_tessera;
  std::unique_ptr<MainFrameFace> m_face;
  std::unique_ptr<CLoadStatus> m_loadStatus;
};
