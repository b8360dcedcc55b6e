// A view: one way of showing a document inside a frame.
//
// Owner    The frame owns its views; a view borrows its document, whose list it is on from
//          construction to destruction.
// Threads  Interface thread.
#pragma once

#include <memory>

#include "docview/wnd.h"

class CDocument;
class CFrameWnd;

// The control that a view fills: a list, a tree, a text. In Qt it is a widget
// (docview/ui/qt_control.h); the fake records the calls.
class ViewControl {
 public:
  virtual ~ViewControl() = default;
  virtual void SetFocus() = 0;
};

class CView : public CWnd {
 public:
  explicit CView(CDocument& document);
  ~CView() override;

  // The first update, when frame and document exist. Calls OnUpdate(null, 0, null).
  virtual void OnInitialUpdate();
  virtual void OnUpdate(CView* sender, unsigned hint, CObject* object);
  // The frame's active view changes: the losing view is notified before the gaining one.
  virtual void OnActivateView(bool activate, CView* activated, CView* deactivated);
  virtual ViewControl* Control() = 0;

  // The chain of a command: this view, then its document.
  bool OnCommand(unsigned id) override;
  bool OnUpdateCommand(CCmdUI& ui) override;
  bool HasCommand(unsigned id) const override;

  CDocument* GetDocument() const { return m_document; }
  CFrameWnd* GetParentFrame() const { return m_frame; }
  // Which pane of its frame the view is; the frame shows the one with kMainPane.
  static constexpr unsigned kMainPane = 59648;
  unsigned GetDlgCtrlID() const { return m_controlId; }
  void SetDlgCtrlID(unsigned id) { m_controlId = id; }

 private:
  friend class CDocument;
  friend class CFrameWnd;
  CDocument* m_document;
  CFrameWnd* m_frame = nullptr;
  unsigned m_controlId = kMainPane;
};
