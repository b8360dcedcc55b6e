// What every frame is: a window around views, one of which is the active one.
//
// Owner    A frame owns its views.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <vector>

#include "docview/view.h"

class CFrameWnd : public CWnd {
 public:
  using CWnd::CWnd;
  ~CFrameWnd() override;

  CView* GetActiveView() const { return m_activeView; }
  CDocument* GetActiveDocument() const;
  // Tells both views of the change, if there is one and `notify`.
  void SetActiveView(CView* view, bool notify = true);
  // Takes ownership and makes the view part of this frame.
  CView* AddView(std::unique_ptr<CView> view);
  // Destroys it. REQUIRES: not the active view.
  void RemoveView(CView* view);
  const std::vector<std::unique_ptr<CView>>& Views() const { return m_views; }
  // Makes the main pane's view the active one if none is, and brings the titles up to date. If
  // `visible`: OnInitialUpdate on every view of the frame, the hidden ones too, then the frame is
  // shown and activated. A frame that stays hidden gets its first update when it is shown.
  void InitialUpdateFrame(CDocument* document, bool visible);
  virtual void UpdateTitle() {}
  virtual void ActivateFrame() {}
  virtual void Destroy() {}
  // The view that carries kMainPane; null when there is none.
  CView* MainPane() const;

 protected:
  virtual void ShowMainPane() {}
  // The window system may activate a frame before its views stand.
  virtual bool IsActive() const { return false; }
  std::vector<std::unique_ptr<CView>> m_views;
  CView* m_activeView = nullptr;
};
