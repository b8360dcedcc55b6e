// Frames: the windows around views, and the window around those.
//
// Owner    The main frame owns the child frames, a child frame owns its views and its face. A frame
//          is destroyed by Destroy, which takes it off its owner.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "docview/frame_wnd.h"

class CMDIFrameWnd;
class CWinApp;

enum class SizeType { Restored = 0, Minimised = 1, Maximised = 2 };
enum class WindowLayout { Cascade, Tile, ArrangeIcons };

// The window of one child frame.
class ChildFrameFace {
 public:
  virtual ~ChildFrameFace() = default;
  virtual void SetTitle(const std::string& title) = 0;
  virtual void Show() = 0;      // with the state that a new child takes in its main window
  virtual void Activate() = 0;  // to the front; answers with CMDIChildWnd::OnActivate
  virtual void ShowView(CView& view) = 0;  // the one view to be seen
};

class CMDIChildWnd : public CFrameWnd {
 public:
  explicit CMDIChildWnd(CMDIFrameWnd& parent);
  ~CMDIChildWnd() override;

  // Proposed outer size in (0: what the face finds good), wanted outer size out; device-independent
  // pixels.
  virtual void PreCreateWindow(int& widthPx, int& heightPx);
  virtual void OnCreate() {}   // the face stands
  virtual void OnDestroy() {}  // the face is about to go
  // Reported by the face, outer size.
  virtual void OnSize(SizeType type, int widthPx, int heightPx);
  virtual void OnContextMenu(int screenXPx, int screenYPx);
  // Asked of the first child of a main window; a later one is shown as the active one is.
  virtual bool BeginsMaximised() const { return false; }
  // The frame became, or ceased to be, the main frame's active child.
  void OnActivate(bool active);
  // The user closes the window: asks the document if this is its last frame, then closes.
  void OnClose();
  // Takes the frame off its owner and destroys it with its views. A document that loses its last
  // view by that is closed. Nothing of the frame may be used behind the call.
  void Destroy() override;

  // The road of a command: active view, its document, this frame.
  bool OnCommand(unsigned id) override;
  bool OnUpdateCommand(CCmdUI& ui) override;
  bool HasCommand(unsigned id) const override;

  // "web.trc", "web.trc:2" when the document has several frames, "a.cpp*" when that one is edited.
  void UpdateTitle() override;
  void ActivateFrame() override;
  // Decides the menus of the main frame while this child is active.
  unsigned MenuResource() const { return m_menuResource; }
  CMDIFrameWnd& GetMDIFrame() const { return m_parent; }
  ChildFrameFace* Face() const { return m_face.get(); }
  const std::string& Title() const { return m_title; }

 protected:
  void ShowMainPane() override;
  bool IsActive() const override;

 private:
  friend class CMultiDocTemplate;
  void TellActiveView(bool active);
  CMDIFrameWnd& m_parent;
  std::unique_ptr<ChildFrameFace> m_face;
  unsigned m_menuResource = 0;
  std::string m_title;
  bool m_asking = false;     // OnClose waits for an answer
  bool m_destroyed = false;  // Destroy has begun
};

class CMDIFrameWnd : public CFrameWnd {
 public:
  explicit CMDIFrameWnd(CWinApp& app);
  ~CMDIFrameWnd() override;

  // Asks for the face of a new child; an implementation calls the child's OnSize, OnActivate,
  // OnClose and OnContextMenu for what the user does.
  virtual std::unique_ptr<ChildFrameFace> CreateChildFace(CMDIChildWnd& child, int widthPx,
                                                          int heightPx) = 0;
  virtual void LayOutChildren(WindowLayout layout) = 0;
  // The active child changed (null: none is open).
  virtual void OnActiveChild(CMDIChildWnd* child);

  CMDIChildWnd* MDIGetActive() const { return m_activeChild; }
  const std::vector<std::unique_ptr<CMDIChildWnd>>& Children() const { return m_children; }
  CMDIChildWnd* AddChild(std::unique_ptr<CMDIChildWnd> child);
  CWinApp& App() const { return m_app; }

  // The road of a command: the active child's road, this frame, the application.
  bool OnCommand(unsigned id) override;
  bool OnUpdateCommand(CCmdUI& ui) override;
  bool HasCommand(unsigned id) const override;

 protected:
  // Destroys all children, for the destructor of a class that holds what their faces need.
  void DestroyChildren();

 private:
  friend class CMDIChildWnd;
  std::unique_ptr<CMDIChildWnd> TakeChild(CMDIChildWnd& child);
  CWinApp& m_app;
  std::vector<std::unique_ptr<CMDIChildWnd>> m_children;
  CMDIChildWnd* m_activeChild = nullptr;
};
