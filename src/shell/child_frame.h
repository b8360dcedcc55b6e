// The window around a trace document's panes: the list and, from its first use on, the tree. One of
// them is shown.
//
// Threads  Interface thread.
#pragma once

#include <functional>

#include "docview/frame.h"
#include "overview/window/frame_overview.h"
#include "panes/tree_as_text.h"
#include "shell/beside/beside_panes.h"
#include "shell/filterline/frame_filter.h"
#include "shell/marks/mark_commands.h"
#include "shell/views/frame_view.h"

class CMainFrame;
class CStatisticsDlg;
class CTraceDoc;
class TracePane;

class CTraceChildFrame : public CMDIChildWnd, public TreeTextTaker, private ViewedFrame {
 public:
  explicit CTraceChildFrame(CMainFrame& parent);
  ~CTraceChildFrame() override;

  // All frames of trace documents share one stored size: the last one sized sets it for the next.
  void PreCreateWindow(int& widthPx, int& heightPx) override;
  void OnCreate() override;
  void ActivateFrame() override;
  void OnDestroy() override;
  void OnSize(SizeType type, int widthPx, int heightPx) override;
  // As the trace windows were at their last resize.
  bool BeginsMaximised() const override;
  // Pop-up 144 and the steps that the pane offers, commands routed as from the menus.
  void OnContextMenu(int screenXPx, int screenYPx) override;
  // From the panes beside the rows back to these; else stops a filter text that is being applied.
  bool OnEscape() override;
  void OnBesideExtent(int extentPx) override { m_beside.OnExtent(extentPx); }

  bool IsTreeShown() const override { return m_shown == kTree; }
  // As Text in the filter dialog of a pane.
  void TakeTreeText(const std::string& text) override { m_filter.TakeTree(text); }
  // Null before the list exists.
  TracePane* ShownPane() const override;
  CTraceView* ListView() const override;
  FrameFilter& Filter() override { return m_filter; }
  BesidePanes& Beside() { return m_beside; }
  FrameOverview& Overview() { return m_overview; }
  ViewedFrame& Viewed() { return *this; }

 private:
  static constexpr unsigned kOtherPane = 59649;  // of a view that does not show
  // Positions in m_panes.
  static constexpr std::size_t kList = 0, kTree = 1;

  using PaneMaker = std::function<std::unique_ptr<TracePane>(CTraceDoc&)>;
  struct Pane {
    PaneMaker make;
    TracePane* view = nullptr;  // null until it is first shown
  };

  // A pane that is made when its command is first used. The command shows it, or the list if the
  // pane is shown already.
  void AddPane(unsigned command, PaneMaker make);
  // A kind of pane beside the rows with the command that toggles it (BesidePanes::Add).
  void AddBeside(unsigned command, const char* stored, BesidePanes::MakePane make);
  void MapBeside();
  void MapGoTo();
  void MapHits();
  void MapMarks();
  void MapOverview();
  void NextArea();
  void MapFilter();
  void MapProfiles();
  void OnProfiles(bool save);
  void OnProfile(std::size_t place);
  bool ToggleTree() override;
  std::vector<std::string> OpenPanes() const override { return m_beside.OpenNames(); }
  std::vector<std::string> OpenPanes(const std::vector<std::string>& names) override {
    return m_beside.OpenThese(names);
  }
  void ShowNotice(const std::string& notice) override;
  void OnStatistics();
  bool HasList() const;
  void TogglePane(std::size_t place);
  // Passes the current trace and the filter to the pane and fills it; false: the user cancelled.
  bool HandOver(TracePane& from, Pane& to);

  CMainFrame& m_main;
  // The list, which the template makes, and the other panes.
  std::vector<Pane> m_panes = std::vector<Pane>(1);
  std::size_t m_shown = kList;
  FrameFilter m_filter;
  BesidePanes m_beside;
  MarkCommands m_marks;
  FrameOverview m_overview;
  FrameView m_view{GetHost(), *this};
  std::unique_ptr<CStatisticsDlg> m_statistics;  // null, or ended: not open
};
