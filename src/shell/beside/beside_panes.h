// The panes beside the rows of one window: which of them are open, where they stand, and the focus
// between them and the rows.
//
// Shape    Each kind of pane has a command, which opens it, brings it to the front, or puts it
// away.
//          Open ones are the tabs of one area, in the order of their kinds. What is put away has
//          neither a pane nor a window.
// Owner    Owned by the frame. Owns the panes and their area; borrows the frame's window and views,
//          which outlive it.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "docview/child_frame_face.h"
#include "docview/posted_step.h"
#include "shell/beside/beside_area.h"
#include "shell/beside/beside_pane.h"

class BesidePanes final : private BesideAreaOwner {
 public:
  using MakeArea = std::function<std::unique_ptr<BesideArea>(BesideAreaOwner&)>;
  using MakePane = std::function<std::unique_ptr<BesidePane>()>;
  // `shown` gives the pane that the frame shows; null before it has one.
  BesidePanes(Host& host, MakeArea makeArea, std::function<TracePane*()> shown);
  ~BesidePanes();

  // A further kind. `stored` is its name in the settings, by which the next window opens with it
  // too; null: that begins without it.
  void Add(unsigned command, const char* stored, MakePane make);
  // The window exists: opens what was open last, without the focus.
  void OnCreate(ChildFrameFace& window);
  // List and tree have changed places.
  void OnPane();

  // Opens the pane or brings it to the front; if it is there, puts it away. The focus stays, unless
  // it was in what is put away.
  void Toggle(unsigned command);
  // Opens it or brings it to the front. Null without such a command, or before there are rows.
  BesidePane* Open(unsigned command);
  BesidePane* Find(unsigned command) const;  // null: not open
  bool IsOpen(unsigned command) const { return Find(command) != nullptr; }
  // Of the open ones, as they are stored.
  std::vector<std::string> OpenNames() const;
  // These and no others, but for those without a name; nothing is stored. Returns the names that no
  // kind has.
  std::vector<std::string> OpenThese(const std::vector<std::string>& names);
  // Its title is another one.
  void OnTitle(const BesidePane& pane);

  BesideEdge Edge() const;
  // Stored; other windows take it when they show their next pane.
  void SetEdge(BesideEdge edge);
  // The user has moved the border.
  void OnExtent(int extentPx);

  bool HasFocus() const { return m_area && m_area->HasFocus(); }
  void SetFocus();
  // To the pane in front, and from the area to the rows.
  void SwitchFocus();
  // Gives the focus back to the rows; false: it is not here.
  bool OnEscape();

 private:
  struct Kind {
    unsigned command;
    const char* stored;
    MakePane make;
    std::unique_ptr<BesidePane> pane = {};  // null: put away
  };

  void OnTab(std::size_t place) override;
  void OnCloseTab(std::size_t place) override;
  Kind* KindOf(unsigned command);
  Kind* KindAt(std::size_t place);  // among the open ones
  std::size_t PlaceOf(const Kind& kind) const;
  void Show(Kind& kind);
  void Close(Kind& kind);
  void PutAway(Kind& kind);
  void Place();
  void See(BesidePane* pane);
  void FocusRows();

  const MakeArea m_makeArea;
  const std::function<TracePane*()> m_shown;
  ChildFrameFace* m_window = nullptr;
  std::vector<Kind> m_kinds;
  // Put away while they may be handling an event.
  std::vector<std::unique_ptr<BesidePane>> m_gone;
  std::unique_ptr<BesideArea> m_area, m_goneArea;  // null: no pane is open
  PostedStep m_bury;
  BesidePane* m_seen = nullptr;  // in front; watches m_watched
  TracePane* m_watched = nullptr;
  BesideEdge m_edge = BesideEdge::Below;  // as shown
};
