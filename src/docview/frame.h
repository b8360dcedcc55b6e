// Frames: the windows around views, and the window around those.
//
// Owner    The main frame owns the child frames, a child frame owns its views and its face. Destroy
//          removes a frame from its owner and destroys it.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "docview/child_frame_face.h"
#include "docview/frame_wnd.h"

class CMDIFrameWnd;
class CWinApp;

enum class SizeType { Restored = 0, Minimised = 1, Maximised = 2 };
enum class WindowLayout { Cascade, Tile, ArrangeIcons };

class CMDIChildWnd : public CFrameWnd {
 public:
  explicit CMDIChildWnd(CMDIFrameWnd& parent);
  ~CMDIChildWnd() override;

  // In: proposed outer size (0: the face chooses). Out: wanted outer size. Device-independent
  // pixels.
  virtual void PreCreateWindow(int& widthPx, int& heightPx);
  virtual void OnCreate() {}   // the face exists
  virtual void OnDestroy() {}  // the face will be destroyed
  // Called by the face, with the outer size.
  virtual void OnSize(SizeType type, int widthPx, int heightPx);
  virtual void OnContextMenu(int screenXPx, int screenYPx);
  // The user has moved the border to the control beside the view; device-independent pixels.
  virtual void OnBesideExtent(int /*extentPx*/) {}
  // Escape that meant nothing to the control with the focus. True: it was used.
  virtual bool OnEscape() { return false; }
  // For the first child of a main window; a later one is shown like the active one.
  virtual bool BeginsMaximised() const { return false; }
  // The frame became, or ceased to be, the main frame's active child.
  void OnActivate(bool active);
  // The user closes the window: asks the document if this is its last frame, then closes.
  void OnClose();
  // Removes the frame from its owner and destroys it with its views. A document that loses its last
  // view by that is closed. Do not use the frame after the call.
  void Destroy() override;

  // The chain of a command: active view, its document, this frame.
  bool OnCommand(unsigned id) override;
  bool OnUpdateCommand(CCmdUI& ui) override;
  bool HasCommand(unsigned id) const override;

  // "web.trc", "web.trc:2" if the document has several frames, "a.cpp*" if it is edited.
  void UpdateTitle() override;
  void ActivateFrame() override;
  // Determines the menus of the main frame while this child is active.
  unsigned MenuResource() const { return m_menuResource; }
  CMDIFrameWnd& GetMDIFrame() const { return m_parent; }
  ChildFrameFace* Face() const { return m_face.get(); }
  const std::string& Title() const { return m_title; }

 protected:
  void ShowMainPane() override;
  bool IsActive() const override;

 private:
  friend class CMultiDocTemplate;
  void NotifyActiveView(bool active);
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

  // Makes the face of a new child. An implementation calls the child's OnSize, OnActivate, OnClose
  // and OnContextMenu for the actions of the user.
  virtual std::unique_ptr<ChildFrameFace> CreateChildFace(CMDIChildWnd& child, int widthPx,
                                                          int heightPx) = 0;
  virtual void LayOutChildren(WindowLayout layout) = 0;
  // The active child changed (null: none is open).
  virtual void OnActiveChild(CMDIChildWnd* child);

  CMDIChildWnd* MDIGetActive() const { return m_activeChild; }
  const std::vector<std::unique_ptr<CMDIChildWnd>>& Children() const { return m_children; }
  CMDIChildWnd* AddChild(std::unique_ptr<CMDIChildWnd> child);
  CWinApp& App() const { return m_app; }

  // The chain of a command: the active child's chain, this frame, the application.
  bool OnCommand(unsigned id) override;
  bool OnUpdateCommand(CCmdUI& ui) override;
  bool HasCommand(unsigned id) const override;

 protected:
  // Destroys all children, for the destructor of a class whose members their faces need.
  void DestroyChildren();

 private:
  friend class CMDIChildWnd;
  std::unique_ptr<CMDIChildWnd> TakeChild(CMDIChildWnd& child);
  CWinApp& m_app;
  std::vector<std::unique_ptr<CMDIChildWnd>> m_children;
  CMDIChildWnd* m_activeChild = nullptr;
};
