// The line of filter text of one window, its commands and the steps of its context menu.
//
// Owner    Owned by the frame; owns the line's face while the line is shown.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "docview/frame.h"
#include "shell/filterline/filter_line.h"

class LookTime;
class TracePane;

class FrameFilter final : private FilterLineOwner {
 public:
  using MakeFace = std::function<std::unique_ptr<FilterLineFace>(FilterLine&)>;
  // `shown` gives the pane that the frame shows; null before it has one.
  FrameFilter(MakeFace makeFace, std::function<TracePane*()> shown)
      : m_makeFace(std::move(makeFace)), m_shown(std::move(shown)) {}

  // The window exists: shows the line if the last one was shown, without the focus.
  void OnCreate(ChildFrameFace& window);
  // Another pane is shown.
  void OnPane();

  bool IsShown() const { return m_face != nullptr; }
  // Shows the line and gives it the focus; with the focus in it, puts it away.
  void Toggle();
  void GoBack();
  void GoForward();
  // A step that the shown pane offers.
  void Take(unsigned command);
  // One that something else offers. Shows the line.
  void TakeStep(const std::string& text);
  // A text of an earlier window. A wrong one stands in the line with its error and filters nothing.
  // False: it is not in force.
  bool Restore(const std::string& text);
  // Also the marks of the filter dialog, as a text. Marks that cannot be set without the names of
  // traces to come are added to the filter text.
  bool Restore(const std::string& text, const std::string& marks);
  // The tree of the filter dialog as text. Shows the line.
  void TakeTree(const std::string& text);
  FilterLine& Line() { return m_line; }

 private:
  WhereProgramPtr WhereInForce() const override;
  bool ApplyWhere(const WhereProgramPtr& program) override;
  std::optional<int> WhereProgress() const override;
  void CancelWhere() override;
  CTraceFilter FilterInForce() const override;
  bool ApplyFilter(const CTraceFilter& filter) override;
  bool IsTree(const WhereExpr& expr, WhereError& error) const override;
  bool OpenAsTree(const WhereExpr& expr, WhereError& error) override;
  std::vector<std::string> WhereNamesOf(WhereField field) const override;
  void PutAwayFilterLine() override;

  bool MarksOf(const std::string& marks, CTraceFilter& tree) const;
  // What the marks and the text show as marks alone, with all ids of the document.
  bool TreeOf(const WhereExpr& expr, CTraceFilter& tree, WhereError& error, LookTime& time) const;
  void Show();

  const MakeFace m_makeFace;
  const std::function<TracePane*()> m_shown;
  ChildFrameFace* m_window = nullptr;
  FilterLine m_line{*this};
  std::unique_ptr<FilterLineFace> m_face;
};
