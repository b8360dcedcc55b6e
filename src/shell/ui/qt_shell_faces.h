// The Qt implementation of the shell's interface to the window system.
//
// Owner    Borrows the host, whose dialogs it registers.
// Threads  Interface thread.
#pragma once

#include <QPointer>
#include <functional>

#include "docview/ui/qt_host.h"
#include "shell/faces.h"
#include "shell/help/ui/help_window.h"

class QtShellFaces : public ShellFaces {
 public:
  // `closed` runs when the main window has been closed finally.
  explicit QtShellFaces(QtHost& host, std::function<void()> closed = {});
  ~QtShellFaces() override;

  std::unique_ptr<MainFrameFace> CreateMainFrame(CMainFrame& frame, int widthPx,
                                                 int heightPx) override;
  void ProposedMainSize(int& widthPx, int& heightPx) override;
  void LargestMainSize(int& widthPx, int& heightPx) override;
  std::unique_ptr<RowList> CreateRowList(RowListOwner& owner) override;
  std::unique_ptr<RowList> CreateSideRows(RowListOwner& owner, const std::string& name) override;
  std::unique_ptr<TreeControl> CreateTree(TreeControlOwner& owner) override;
  std::unique_ptr<RichEdit> CreateRichEdit(RichEditOwner& owner) override;
  std::unique_ptr<ConfigPane> CreateConfigPane(ListBoxOwner& owner) override;
  std::unique_ptr<FilterLineFace> CreateFilterLine(FilterLine& line) override;
  std::unique_ptr<OverviewFace> CreateOverview(OverviewStrip& strip) override;
  std::unique_ptr<BesideArea> CreateBesideArea(BesideAreaOwner& owner) override;
  std::unique_ptr<DetailsFace> CreateDetails(DetailsPane& pane) override;
  bool IsModal() const override { return QtHost::InModal(); }
  void ShowAbout(const std::string& versionLine) override;
  void ShowPrintSetup() override;
  void ShowHelp(const std::string& topic) override;

  HelpWindow* Help() const { return m_help; }

 private:
  QtHost& m_host;
  std::function<void()> m_closed;
  QPointer<QWidget> m_mainWidget;
  QPointer<HelpWindow> m_help;
};
