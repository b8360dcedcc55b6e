// The top window: tool bar, status panes, progress box, stored size, Quick Close.
//
// Threads  Interface thread; the load threads reach it by posted WM_TRACE_PROGRESS only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "documents/load_progress.h"
#include "docview/frame.h"
#include "shell/faces.h"
#include "shell/load_status.h"

class CTesseraApp;

class CMainFrame : public CMDIFrameWnd {
 public:
  explicit CMainFrame(CTesseraApp& app);
  ~CMainFrame() override;

  // Makes the window with its bars; clears both custom panes. False: there is no window.
  bool LoadFrame();
  // Shows it in its stored size.
  void ShowWindow();
  void OnSize(SizeType type, int widthPx, int heightPx);
  // The user wants to leave: may ask the Quick Close question, then asks the documents, then closes
  // them and the window. After a refusal or Cancel nothing has changed.
  void OnClose();
  void OnDropFiles(const std::vector<std::string>& paths);
  // Called a few times a second, and soon after a command: updates the texts about the window in
  // front.
  void OnIdle();
  // Shows an error in the message pane until a window opens or comes to the front. Without a status
  // bar it is shown in a box. Empty: removes the text.
  void SetNotice(const std::string& notice, const std::string& details = {});

  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;
  std::unique_ptr<ChildFrameFace> CreateChildFace(CMDIChildWnd& child, int widthPx,
                                                  int heightPx) override;
  void LayOutChildren(WindowLayout layout) override;
  void OnActiveChild(CMDIChildWnd* child) override;
  void UpdateTitle() override;  // "Tessera", "Tessera - [web.trc]" when a child is maximised

  // The children are shown as tabs; stored between runs.
  bool AreTabsShown() const { return m_tabs; }
  CLoadStatus* LoadStatus() const { return m_loadStatus.get(); }
  CTesseraApp& Tessera() const { return m_tessera; }
  MainFrameFace* Face() const { return m_face.get(); }
  bool m_childMaximised = false;  // set by the face, with UpdateTitle

 private:
  void MapBars();
  void MapTabs();
  void ShowTabs(bool on);
  void MapPanes();
  void MapHelp();
  const char* HelpTopic() const;  // for the active window
  void OnUpdateRowCount(CCmdUI& ui);
  void OnUpdateFiltered(CCmdUI& ui);
  bool MayQuickClose();  // false: the user stays
  void OnTraceRowCount(std::int32_t count);
  void OnTraceFiltered(std::int32_t filtered);
  void OnTraceProgress(std::uintptr_t what, std::intptr_t value);
  void OnLoadStart(const CLoadProgressStart& start);
  void ShowMessage();

  CTesseraApp& m_tessera;
  bool m_closing = false;  // a question of OnClose is shown
  bool m_tabs = false;
  std::int64_t m_rows = -1;  // as shown in the pane
  std::string m_notice, m_noticeDetails;
  std::unique_ptr<MainFrameFace> m_face;
  std::unique_ptr<CLoadStatus> m_loadStatus;
};
