// The base of every frame: a window around views, one of which is active.
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
  // Notifies both views of the change, if there is one and `notify` is set.
  void SetActiveView(CView* view, bool notify = true);
  // Takes ownership and makes the view part of this frame.
  CView* AddView(std::unique_ptr<CView> view);
  // Destroys it. REQUIRES: not the active view.
  void RemoveView(CView* view);
  const std::vector<std::unique_ptr<CView>>& Views() const { return m_views; }
  // Activates the main pane's view if no view is active, and updates the titles. If `visible`, it
  // calls OnInitialUpdate of every view of the frame, including hidden ones, and shows and
  // activates the frame. A frame that stays hidden gets its first update when it is shown.
  void InitialUpdateFrame(CDocument* document, bool visible);
  virtual void UpdateTitle() {}
  virtual void ActivateFrame() {}
  virtual void Destroy() {}
  // The view with kMainPane; null when there is none.
  CView* MainPane() const;

 protected:
  virtual void ShowMainPane() {}
  // The window system may activate a frame before its views exist.
  virtual bool IsActive() const { return false; }
  std::vector<std::unique_ptr<CView>> m_views;
  CView* m_activeView = nullptr;
};
