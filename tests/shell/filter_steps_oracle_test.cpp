// Random sequences of what a user does with the filter text of a window: texts, steps by the cell,
// back and forth, stops, the way to the tree and back, each while an earlier text may be under way;
// beside a plain record of texts and steps.
#include <random>

#include "shell/child_frame.h"
#include "shell_fixture.h"
#include "support/short_pieces.h"
#include "tree/filter/filter_pass.h"
#include "tree/proc/proc_view.h"
#include "where/steps/cell_step.h"

namespace {

using Strings = std::vector<std::string>;

// The texts of a window, as a list with a place.
struct PlainSteps {
  Strings texts{std::string()};
  std::size_t at = 0;

  bool operator==(const PlainSteps&) const = default;
  const std::string& Text() const { return texts[at]; }
  void Go(const std::string& text) {
    if (text == Text()) return;
    texts.resize(at + 1);
    texts.push_back(text);
    ++at;
  }
};

class FilterSteps : public ShellTest, public testing::WithParamInterface<unsigned> {
 protected:
  static constexpr int kTraces = 90;

  std::size_t Below(std::size_t bound) { return m_random() % bound; }
  void OpenFile() {
    TrcImage image;
    image.Name(1, "web").Name(2, "shop").Name(3, "812").Name(4, "main").Name(5, "worker");
    image.Name(8, "Net").Name(9, "Job & queue");
    for (int i = 1; i <= kTraces; ++i)
      image.Trace({.text = Below(9) ? std::to_string(Below(20)) : "Begin: " + std::to_string(i),
                   .machine = 1,
                   .app = 2,
                   .component = static_cast<NameId>(8 + Below(2)),
                   .time = PackTime(9, 41, static_cast<unsigned>(i % 60), 0),
                   .tic = static_cast<std::uint64_t>(i) * 1000,
                   .pid = 3,
                   .tid = static_cast<NameId>(4 + Below(2)),
                   .attributes = static_cast<std::uint16_t>(1 << Below(3))});
    ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
    m_list = &ListOf(Child());
    Frame().OnCommand(ID_VIEW_FILTERTEXT);
    List().m_scanSetup = {.perLook = 1 + Below(9), .perPiece = 1 + Below(9), .threads = 2};
  }
  CTraceChildFrame& Child() { return dynamic_cast<CTraceChildFrame&>(*Frame().Children()[0]); }
  CTraceView& List() { return *m_list; }
  CProcView& Tree() { return dynamic_cast<CProcView&>(Pane()); }
  TracePane& Pane() { return *Child().ShownPane(); }
  FilterLine& Line() { return m_faces.m_filterLine->m_line; }
  std::string InForce() {
    const WhereProgramPtr where = Pane().m_filter.where;
    return where ? where->Text() : std::string();
  }

  // ---- the plain record
  // A text was asked for: by a command the line gets it and, if it is stopped, its own text again.
  void Asked(const std::string& text, PlainSteps steps, bool byCommand) {
    if (!m_before) {
      m_before = m_steps;
      m_lineBefore.reset();
    }
    // Of several commands the first one tells what a stop leaves.
    if (!byCommand)
      m_lineBefore.reset();
    else if (!m_lineBefore)
      m_lineBefore = m_lineText;
    m_steps = std::move(steps);
    m_lineText = text;
  }
  void Settled() {
    if (!Line().Percent()) m_before.reset();
  }
  void Stopped() {
    if (!m_before) return;
    // All rows may have been there: then only the search for the focus was stopped.
    const bool inForce = Pane().m_filter.where != m_whereBefore;
    if (!inForce) {
      m_steps = *m_before;
      if (m_lineBefore) m_lineText = *m_lineBefore;
    }
    m_before.reset();
  }
  PlainSteps With(const std::string& text) const {
    PlainSteps steps = m_steps;
    steps.Go(text);
    return steps;
  }

  // ---- what the user does
  void Type() {
    static const Strings texts = {"",
                                  "severity >= warn",
                                  "component == Net",
                                  "text contains \"1\"",
                                  "tid == main and delta > 1ns",
                                  "not text startswith Begin",
                                  "time > end - 30s",
                                  "text matches \"^1?[0-4]$\"",
                                  "text == nothing"};
    const std::string& text = texts[Below(texts.size())];
    Line().Edit(text);
    ASSERT_TRUE(Line().Apply());
    Asked(text, With(text), false);
  }
  void OpenMenuOfList() {
    if (List().List().ItemCount() == 0) return;
    const int row = static_cast<int>(Below(static_cast<std::size_t>(List().List().ItemCount())));
    List().List().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
    List().OnRowListContextMenu(static_cast<int>(Below(kColumnCount)) * 100 + 50, 7);
  }
  void OpenMenuOfTree() {
    CProcView& view = Tree();
    for (std::size_t steps = Below(9); steps > 0; --steps)
      view.Tree().SelectItem(view.NextTreeItem(view.Tree().SelectedItem()));
    view.OnTreeContextMenu(50, 7);
  }
  void StepByCell() {
    if (Child().IsTreeShown())
      OpenMenuOfTree();
    else
      OpenMenuOfList();
    const std::vector<CellStep> steps = Pane().OfferedSteps();
    if (steps.empty()) return;
    const CellStep& step = steps[Below(steps.size())];
    const std::optional<std::string> text = WithStep(InForce(), step.text);
    ASSERT_TRUE(text);
    ASSERT_TRUE(Frame().OnCommand(step.command));
    Asked(*text, With(*text), true);
  }
  void Walk(bool back) {
    const bool can = back ? m_steps.at > 0 : m_steps.at + 1 < m_steps.texts.size();
    const unsigned command = back ? ID_VIEW_FILTERBACK : ID_VIEW_FILTERFORWARD;
    ASSERT_EQ(State(command).IsEnabled(), can);
    if (!can) return;
    PlainSteps steps = m_steps;
    steps.at = back ? steps.at - 1 : steps.at + 1;
    ASSERT_TRUE(Frame().OnCommand(command));
    Asked(steps.Text(), steps, true);
  }
  void Stop() {
    if (!Line().Percent()) return;
    Line().Escape();
    Stopped();
  }
  void Toggle() {
    ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
    Pane().m_scanSetup = List().m_scanSetup;
    ASSERT_FALSE(Line().Percent()) << "the other pane waits for all rows";
  }
  void Step() {
    if (!m_before) m_whereBefore = Pane().m_filter.where;
    switch (Below(12)) {
      case 0:
        return Type();
      case 1:
        return StepByCell();
      case 2:
      case 3:
        return Walk(true);
      case 4:
        return Walk(false);
      case 5:
        return Stop();
      case 6:
        return Below(3) ? Stop() : Toggle();
      case 7:
        if (Line().Percent()) m_host.WaitForPost();
        break;
      default:
        break;
    }
    m_host.RunOnePosted();
  }

  void ExpectThePlainRecord() {
    ASSERT_EQ(InForce(), m_steps.Text());
    ASSERT_EQ(Line().Text(), m_lineText);
    ASSERT_EQ(Line().CanGoBack(), m_steps.at > 0);
    ASSERT_EQ(Line().CanGoForward(), m_steps.at + 1 < m_steps.texts.size());
    if (Line().Percent()) return;
    CTraceFilter filter;
    WhereError error;
    filter.where = InForce().empty() ? nullptr : WhereProgram::Compile(InForce(), error);
    CTraceDoc& document = Pane().Document();
    FilterPass pass(filter, document);
    std::vector<const TraceEvent_i*> rows, shown;
    document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
      if (pass.Matches(*event)) rows.push_back(event);
    });
    if (Child().IsTreeShown()) {
      ASSERT_EQ(Tree().Model().TraceCount(), static_cast<int>(rows.size()));
      return;
    }
    for (int row = 0; row < List().Rows().Size(); ++row)
      shown.push_back(List().Rows().EventAt(row));
    ASSERT_EQ(shown, rows);
    ASSERT_EQ(List().List().ItemCount(), static_cast<int>(rows.size()));
  }

  std::mt19937 m_random{GetParam()};
  CTraceView* m_list = nullptr;
  PlainSteps m_steps;                  // with the text that was asked for last
  std::optional<PlainSteps> m_before;  // while a text is under way: those in force
  WhereProgramPtr m_whereBefore;
  std::optional<std::string> m_lineBefore;  // of a text that a command asked for
  std::string m_lineText;
};

TEST_P(FilterSteps, TextsStepsAndRowsAreThoseOfThePlainRecord) {
  Start();
  ASSERT_NO_FATAL_FAILURE(OpenFile());
  const ShortPieces pieces(m_host);
  for (int step = 0; step < 80; ++step) {
    ASSERT_NO_FATAL_FAILURE(Step()) << "step " << step;
    ASSERT_NO_FATAL_FAILURE(ExpectThePlainRecord()) << "step " << step;
    Settled();
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FilterSteps, testing::Range(1u, 201u));

}  // namespace
