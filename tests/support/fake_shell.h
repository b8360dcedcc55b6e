// The window system for the shell, without windows.
//
// Shape    Log lines besides those of fake_frame.h: "main title Tessera", "main menu 129",
//          "main pane 59143 \"3\"", "main show", "main tabs", "main close", "main gone", "main
//          popup 144 10 20", "main bar 59392 off", "main recent files", "about Tessera
//          Version 3.1.0", "print setup", "help \"\"".
// Owner    The log and the faces belong to the test and outlive the application.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "shell/faces.h"
#include "shell/main_frame.h"
#include "support/fake_beside_area.h"
#include "support/fake_config_pane.h"
#include "support/fake_details.h"
#include "support/fake_filter_line.h"
#include "support/fake_frame.h"
#include "support/fake_overview.h"
#include "support/fake_rich_edit.h"
#include "support/fake_row_list.h"
#include "support/fake_tree_control.h"

class FakeMainFrameFace : public MainFrameFace {
 public:
  // `slot` points to this face while it exists.
  FakeMainFrameFace(FrameLog& log, FakeMainFrameFace*& slot, int widthPx, int heightPx)
      : m_widthPx(widthPx), m_heightPx(heightPx), m_log(log), m_slot(slot) {
    m_slot = this;
  }
  ~FakeMainFrameFace() override {
    m_slot = nullptr;
    m_log.Add("main gone");
  }

  void SetTitle(const std::string& title) override {
    m_title = title;
    m_log.Add("main title " + title);
  }
  void SetMenu(unsigned resource) override {
    m_menu = resource;
    m_log.Add("main menu " + std::to_string(resource));
  }
  void SetPaneText(unsigned pane, const std::string& text) override {
    m_panes[pane] = text;
    m_log.Add("main pane " + std::to_string(pane) + " \"" + text + "\"");
  }
  void SetPaneToolTip(unsigned pane, const std::string& text) override { m_paneTips[pane] = text; }
  void Show(bool maximised) override {
    m_shown = true;
    m_log.Add(maximised ? "main show maximised" : "main show");
  }
  void Close() override {
    m_closed = true;
    m_log.Add("main close");
  }
  std::unique_ptr<ChildFrameFace> CreateChild(CMDIChildWnd& child, int widthPx,
                                              int heightPx) override {
    return std::make_unique<FakeChildFace>(m_log, child, widthPx, heightPx);
  }
  void LayOutChildren(WindowLayout layout) override {
    static constexpr const char* kNames[] = {"cascade", "tile", "arrange icons"};
    m_log.Add(std::string("layout ") + kNames[static_cast<int>(layout)]);
  }
  void ShowTabs(bool on) override { m_log.Add(on ? "main tabs" : "main windows"); }
  void TrackPopupMenu(unsigned resource, int screenXPx, int screenYPx,
                      const std::vector<MenuItem>& more) override {
    m_popupMore = more;
    m_log.Add("main popup " + std::to_string(resource) + " " + std::to_string(screenXPx) + " " +
              std::to_string(screenYPx));
  }
  void ShowBar(unsigned id, bool on) override {
    m_bars[id] = on;
    m_log.Add("main bar " + std::to_string(id) + (on ? " on" : " off"));
  }
  bool IsBarShown(unsigned id) const override {
    const auto bar = m_bars.find(id);
    return bar == m_bars.end() || bar->second;  // both are shown at the start
  }
  void RecentFilesChanged() override { m_log.Add("main recent files"); }

  int m_widthPx, m_heightPx;
  std::string m_title;
  unsigned m_menu = 0;
  std::map<unsigned, std::string> m_panes, m_paneTips;
  std::map<unsigned, bool> m_bars;
  std::vector<MenuItem> m_popupMore;  // of the last pop-up
  bool m_shown = false;
  bool m_closed = false;

 private:
  FrameLog& m_log;
  FakeMainFrameFace*& m_slot;
};

class FakeShellFaces : public ShellFaces {
 public:
  explicit FakeShellFaces(FrameLog& log) : m_log(log) {}

  std::unique_ptr<MainFrameFace> CreateMainFrame(CMainFrame&, int widthPx, int heightPx) override {
    if (m_refuseFrame) return nullptr;
    return std::make_unique<FakeMainFrameFace>(m_log, m_main, widthPx, heightPx);
  }
  void ProposedMainSize(int& widthPx, int& heightPx) override {
    widthPx = m_proposedWidthPx;
    heightPx = m_proposedHeightPx;
  }
  void LargestMainSize(int& widthPx, int& heightPx) override {
    widthPx = m_largestWidthPx;
    heightPx = m_largestHeightPx;
  }
  std::unique_ptr<RichEdit> CreateRichEdit(RichEditOwner& owner) override {
    return std::make_unique<FakeRichEdit>(owner);
  }
  std::unique_ptr<RowList> CreateRowList(RowListOwner& owner) override {
    return Unseen<FakeRowList>(owner);
  }
  std::unique_ptr<RowList> CreateSideRows(RowListOwner& owner, const std::string& name) override {
    auto made = std::make_unique<FakeRowList>(owner);
    m_sideRows[name] = made.get();
    return made;
  }
  std::unique_ptr<TreeControl> CreateTree(TreeControlOwner& owner) override {
    return Unseen<FakeTreeControl>(owner);
  }
  bool IsModal() const override { return m_isModal; }
  std::unique_ptr<ConfigPane> CreateConfigPane(ListBoxOwner& owner) override {
    return std::make_unique<FakeConfigPane>(owner);
  }
  std::unique_ptr<FilterLineFace> CreateFilterLine(FilterLine& line) override {
    return std::make_unique<FakeFilterLine>(line, m_filterLine);
  }
  std::unique_ptr<OverviewFace> CreateOverview(OverviewStrip& strip) override {
    return std::make_unique<FakeOverview>(strip, m_overview);
  }
  std::unique_ptr<BesideArea> CreateBesideArea(BesideAreaOwner& owner) override {
    return std::make_unique<FakeBesideArea>(owner, m_besideArea);
  }
  std::unique_ptr<DetailsFace> CreateDetails(DetailsPane& pane) override {
    return std::make_unique<FakeDetails>(pane, m_details);
  }
  void ShowAbout(const std::string& versionLine) override { m_log.Add("about " + versionLine); }
  void ShowPrintSetup() override { m_log.Add("print setup"); }
  void ShowHelp(const std::string& topic) override { m_log.Add("help \"" + topic + "\""); }

  std::map<std::string, FakeRowList*> m_sideRows;  // made last, by name; may have gone
  bool m_refuseFrame = false;
  bool m_isModal = false;  // a modal box or dialog is open
  int m_proposedWidthPx = 1000;
  int m_proposedHeightPx = 700;
  int m_largestWidthPx = 32767, m_largestHeightPx = 32767;
  FakeOverview* m_overview = nullptr;
  FakeFilterLine* m_filterLine = nullptr;  // the one made last; null when it has gone
  FakeBesideArea* m_besideArea = nullptr;  // likewise
  FakeDetails* m_details = nullptr;        // likewise
  FakeMainFrameFace* m_main = nullptr;     // null while there is no main window

 private:
  // A control as a window system makes it, before a frame sets its size.
  template <class Control, class Owner>
  static std::unique_ptr<Control> Unseen(Owner& owner) {
    auto control = std::make_unique<Control>(owner);
    control->SetHeight(SizedControl::kUnseenHeightPx);
    return control;
  }

  FrameLog& m_log;
};
