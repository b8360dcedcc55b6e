// The interface of the shell to the window system.
//
// Owner    The main frame owns its face; the faces object outlives the application.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>

#include "config/view/config_pane.h"
#include "controls/list/row_list.h"
#include "controls/tree/tree_control.h"
#include "docview/frame.h"
#include "listview/source/rich_edit.h"
#include "overview/window/overview_strip.h"
#include "shell/beside/beside_area.h"
#include "shell/details/details_pane.h"
#include "shell/filterline/filter_line.h"
#include "shell/menus/menu_resources.h"

class CMainFrame;

// The main window. It calls CMainFrame: OnCommand for menus, keys and buttons, OnSize, OnClose,
// OnDropFiles, OnIdle; and UpdateCommand before it shows the state of a command.
class MainFrameFace {
 public:
  virtual ~MainFrameFace() = default;
  virtual void SetTitle(const std::string& title) = 0;
  virtual void SetMenu(unsigned resource) = 0;  // the menu bar of the active document
  virtual void SetPaneText(unsigned pane, const std::string& text) = 0;
  virtual void SetPaneToolTip(unsigned pane, const std::string& text) = 0;
  virtual void Show(bool maximised) = 0;
  virtual void Close() = 0;  // destroys the window; the program ends after the last one
  virtual std::unique_ptr<ChildFrameFace> CreateChild(CMDIChildWnd& child, int widthPx,
                                                      int heightPx) = 0;
  virtual void LayOutChildren(WindowLayout layout) = 0;
  virtual void ShowTabs(bool on) = 0;  // the children as tabs, or as windows
  // `more`: items behind those of the resource, for this time only.
  virtual void TrackPopupMenu(unsigned resource, int screenXPx, int screenYPx,
                              const std::vector<MenuItem>& more) = 0;
  virtual void ShowBar(unsigned id, bool on) = 0;  // ID_VIEW_TOOLBAR, ID_VIEW_STATUS_BAR
  virtual bool IsBarShown(unsigned id) const = 0;
  virtual void RecentFilesChanged() = 0;
};

class ShellFaces {
 public:
  virtual ~ShellFaces() = default;
  // Null when the window cannot be made; the program then ends.
  virtual std::unique_ptr<MainFrameFace> CreateMainFrame(CMainFrame& frame, int widthPx,
                                                         int heightPx) = 0;
  virtual void ProposedMainSize(int& widthPx, int& heightPx) = 0;
  // The available space of the screen.
  virtual void LargestMainSize(int& widthPx, int& heightPx) = 0;
  virtual std::unique_ptr<RowList> CreateRowList(RowListOwner& owner) = 0;
  // A list of something else than traces; `name` is for assistive technology.
  virtual std::unique_ptr<RowList> CreateSideRows(RowListOwner& owner, const std::string& name) = 0;
  virtual std::unique_ptr<TreeControl> CreateTree(TreeControlOwner& owner) = 0;
  virtual std::unique_ptr<RichEdit> CreateRichEdit(RichEditOwner& owner) = 0;
  virtual std::unique_ptr<ConfigPane> CreateConfigPane(ListBoxOwner& owner) = 0;
  virtual std::unique_ptr<FilterLineFace> CreateFilterLine(FilterLine& line) = 0;
  virtual std::unique_ptr<OverviewFace> CreateOverview(OverviewStrip& strip) = 0;
  virtual std::unique_ptr<BesideArea> CreateBesideArea(BesideAreaOwner& owner) = 0;
  virtual std::unique_ptr<DetailsFace> CreateDetails(DetailsPane& pane) = 0;
  // Is a modal box or dialog open?
  virtual bool IsModal() const = 0;
  virtual void ShowAbout(const std::string& versionLine) = 0;
  virtual void ShowPrintSetup() = 0;
  // A built-in help page by topic; empty for the contents.
  virtual void ShowHelp(const std::string& topic) = 0;
};
