// Long work of the tree view: below a box, and what its Cancel leaves behind.
#include <algorithm>
#include <filesystem>

#include "listview/details/trace_detail_dialog.h"
#include "proc_view_fixture.h"
#include "support/folder_names.h"
#include "support/short_pieces.h"
#include "tree/filter/filter_dialog.h"
#include "tree/find/find_dialog.h"
#include "tree/find/find_settings.h"
#include "tree/proc/model/tree_text.h"
#include "tree/proc/proc_view_iterator.h"

namespace {

constexpr int kMany = 10000;  // some parts' worth of traces, and of children

class ProcViewLong : public ProcViewTest {
 protected:
  ~ProcViewLong() override { FindSettings = {}; }

  static void Cancel(CDialog& box) { box.OnCancel(); }
  // The user hides everything in the filter dialog.
  void HideAll() {
    m_host.AnswerDialog([](CDialog& dialog) {
      auto& filter = dynamic_cast<CFilterDialog&>(dialog);
      filter.OnTreeClick(&filter.Tree().Root(), true);
      filter.OnOK();
    });
    m_view->OnCommand(ID_VIEW_FILTER);
  }
  void Find(const std::string& text, bool backward) {
    m_host.AnswerDialog([=](CDialog& dialog) {
      auto& find = dynamic_cast<CFindDialog&>(dialog);
      find.searchText = text;
      find.backward = backward;
      find.OnOK();
    });
    m_view->OnCommand(ID_EDIT_FIND);
  }
  // Numbers that begin again twice, in both threads.
  void AddThreeRuns() {
    for (int run = 0; run < 3; ++run) {
      m_number = 1;
      for (int i = 0; i < kMany; ++i)
        Add({.text = std::to_string(run) + "/" + std::to_string(i),
             .tid = static_cast<NameId>(4 + i % 2)});
    }
  }
  std::string Export(RecordingHost::DialogScript script) {
    const std::string path = m_directory.File("tree.txt");
    m_host.AnswerFileDialog(path);
    m_host.AnswerWorkBox(std::move(script));
    m_view->OnCommand(ID_FILE_EXPORT);
    return ReadAll(path);
  }
  static std::string TextOf(const ProcModel& model) {
    std::string text;
    VisitNodes(model, model.Root(), kAllLevels,
               [&](int depth, bool closed, const std::string& line) {
                 AppendTreeLine(text, depth, closed, line);
                 text += '\n';
                 return true;
               });
    return text;
  }
};

TEST_F(ProcViewLong, ATreeBuiltInPartsIsTheTreeBuiltAtOnce) {
  for (int i = 0; i < kMany; ++i)
    Add({.text = i % 5 == 0   ? "Begin: work"
                 : i % 5 == 3 ? "End: work"
                              : "inside",
         .machine = static_cast<NameId>(i / 4000 % 2 ? 6 : 1),
         .tic = static_cast<std::uint64_t>(i) * 1000,
         .tid = static_cast<NameId>(4 + i % 2)});
  const ShortPieces pieces(m_host);
  int boxes = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    ++boxes;
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Building the procedure tree...");
    EXPECT_TRUE(m_document.IsBusy());
    m_host.Finish(box);
  });
  Open();
  EXPECT_EQ(boxes, 1);
  EXPECT_EQ(m_tree->Picture(), "+desk\n+lab\n");
  CTraceFilter filter;
  ProcModel atOnce(m_document, filter);
  atOnce.AddAll();
  EXPECT_EQ(TextOf(m_view->Model()), TextOf(atOnce));
}

TEST_F(ProcViewLong, ACancelledBuildLeavesAnEmptyTreeThatTakesNoHintsUntilItIsBuilt) {
  AddMany(kMany);
  {
    const ShortPieces pieces(m_host);
    m_host.AnswerWorkBox(Cancel);
    m_view->m_currentEvent = m_document.m_traces[0];
    Open();
  }
  EXPECT_FALSE(m_view->IsBuilt());
  EXPECT_EQ(m_tree->Count(), 0U);
  EXPECT_EQ(m_view->Model().TraceCount(), 0);
  Drain("late");
  FollowTo(m_document.m_traces[5]);
  Trim(3);
  EXPECT_EQ(m_view->m_currentEvent, nullptr) << "its trace has gone";
  EXPECT_EQ(m_tree->Count(), 0U);
  EXPECT_EQ(m_view->Model().TraceCount(), 0);
  EXPECT_TRUE(m_view->Build());
  EXPECT_EQ(m_view->Model().TraceCount(), kMany - 2);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
}

TEST_F(ProcViewLong, WhileTheFilterIsAppliedTheTreeStandsAndCancelLeavesAllAsItWas) {
  AddMany(kMany);
  Open();
  ExpandToThread();
  Select("3");
  m_view->OnActivateView(true, nullptr, nullptr);
  const std::string before = m_tree->Picture();
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    m_host.TickTimers();
    EXPECT_EQ(m_tree->Picture(), before);
    EXPECT_TRUE(m_tree->redraw);
    box.OnCancel();
  });
  HideAll();
  EXPECT_EQ(m_tree->Picture(), before);
  EXPECT_EQ(Selected(), "3");
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_FALSE(m_view->m_filterChanged);
  EXPECT_EQ(m_view->Model().TraceCount(), kMany);
  Drain("late");
  EXPECT_EQ(m_view->Model().TraceCount(), kMany + 1);
  HideAll();
  EXPECT_EQ(m_tree->Picture(), "");
  EXPECT_TRUE(m_view->m_filterChanged);
}

TEST_F(ProcViewLong, AFilterThatIsHandedOverAndCancelledLeavesFilterAndMark) {
  AddMany(kMany);
  Open();
  m_view->m_filterChanged = true;
  CTraceFilter filter;
  filter.allTraces = filter.allSeverities = 0;
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox(Cancel);
  EXPECT_FALSE(m_view->SetFilter(filter, true));
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_TRUE(m_view->m_filterChanged);
  EXPECT_TRUE(m_view->SetFilter(filter, true));
  EXPECT_EQ(m_view->m_filter.allTraces, 0);
  EXPECT_FALSE(m_view->m_filterChanged);
}

TEST_F(ProcViewLong, ADocumentThatIsClearedMeanwhileIsBuiltAnew) {
  AddMany(kMany);
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    Clear();
    Add("new");
    m_view->OnUpdate(nullptr, kHintReady, nullptr);
    m_host.Finish(box);
  });
  Open();
  EXPECT_EQ(m_view->Model().TraceCount(), 1);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
  ExpandToThread();
  EXPECT_TRUE(m_tree->Find("new"));
}

TEST_F(ProcViewLong, ALoadedDocumentWhoseTreeIsCancelledShowsNoneOfTheOldItems) {
  AddMany(3);
  Open();
  ExpandToThread();
  m_document.m_traces.Clear();
  AddMany(kMany);
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox(Cancel);
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  EXPECT_EQ(m_tree->Count(), 0U);
  EXPECT_FALSE(m_view->IsBuilt());
}

TEST_F(ProcViewLong, ACancelledOpeningLeavesTheItemClosedAndTheNextOneGoesOn) {
  AddMany(kMany);
  Open();
  for (const char* text : {"desk", "shop", kProcess}) Expand(text);
  {
    const ShortPieces pieces(m_host);
    m_host.AnswerWorkBox([&](CDialog& box) {
      EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Opening...");
      m_host.TickTimers();
      EXPECT_GT(m_tree->Count(), 4U);
      box.OnCancel();
    });
    Expand(kThread);
  }
  EXPECT_LT(m_tree->Count(), 4U + kMany);
  EXPECT_EQ(m_tree->Picture(), "-desk\n  -shop\n    -PID 100 - 0 ps\n      +TID one - 0 ps\n");
  Drain("late");
  Expand(kThread);
  EXPECT_EQ(m_tree->Count(), 4U + kMany + 1);
  const std::string picture = m_tree->Picture();
  EXPECT_NE(picture.find(" 4095\n         4096\n         4097\n"), std::string::npos);
  EXPECT_TRUE(picture.ends_with(" 10000\n         late\n"));
}

TEST_F(ProcViewLong, AFollowThatIsCancelledSelectsNothingAnew) {
  AddMany(kMany);
  Open();
  for (const char* text : {"desk", "shop", kProcess}) Expand(text);
  Select("desk");
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox(Cancel);
  FollowTo(m_document.m_traces[9000]);
  EXPECT_EQ(Selected(), "desk");
  FollowTo(m_document.m_traces[9000]);
  EXPECT_EQ(Selected(), "9001");
}

TEST_F(ProcViewLong, ATrimShowsNoBox) {
  AddMany(kMany);
  Open();
  const ShortPieces pieces(m_host);
  m_host.WantNoWorkBox();  // in the middle of a drain
  Trim(1);
  EXPECT_EQ(Selected(), "2");
}

// Items that came while their thread was closed are made when the selection opens it.
TEST_F(ProcViewLong, ATrimThatOpensALargeThreadShowsNoBox) {
  AddMany(3);
  Open();
  ExpandToThread();
  m_tree->Expand(m_tree->Find(kThread), false);
  Drain(std::vector<TraceFields>(kMany, {.text = "late"}));
  const ShortPieces pieces(m_host);
  m_host.WantNoWorkBox();  // in the middle of a drain
  Trim(1);
  EXPECT_EQ(Selected(), "2");
  EXPECT_EQ(m_tree->Count(), 4U + 2 + kMany);
}

TEST_F(ProcViewLong, AFindMakesTheItemsOfALargeNodeInPartsEitherWay) {
  for (const bool backward : {false, true}) {
    m_document.m_traces.Clear();
    m_number = 1;
    AddMany(kMany);
    Add({.text = "far", .machine = 6});
    m_view->OnUpdate(nullptr, kHintReady, nullptr);
    Select(backward ? "lab" : "desk");
    const ShortPieces pieces(m_host);
    std::size_t most = 0;
    m_host.AnswerWorkBox([&](CDialog& box) {
      std::size_t items = m_tree->Count();
      while (!box.Ended()) {
        m_host.TickTimers();
        most = std::max(most, m_tree->Count() - items);
        items = m_tree->Count();
      }
    });
    Find("7000", backward);
    EXPECT_EQ(Selected(), "7000");
    EXPECT_GT(most, 1000U);
    EXPECT_LT(most, 5000U);
  }
}

TEST_F(ProcViewLong, AFindThatIsCancelledInALargeNodeSelectsNothing) {
  AddMany(kMany);
  Open();
  Select("desk");
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    while (m_tree->Count() < 5000) m_host.TickTimers();
    box.OnCancel();
  });
  Find("7000", false);
  EXPECT_EQ(Selected(), "desk");
  EXPECT_EQ(m_tree->Picture(), "+desk*\n");
}

TEST_F(ProcViewLong, AnExportGoesOnBelowABoxAndCancelLeavesWhatWasThere) {
  AddMany(kMany);
  Open();
  ExpandToThread();
  m_directory.File("tree.txt", "old");
  const ShortPieces pieces(m_host);
  EXPECT_EQ(Export([&](CDialog& box) {
              EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Exporting...");
              m_host.TickTimers();
              box.OnCancel();
            }),
            "old");
  EXPECT_EQ(NamesIn(m_directory.Path()), std::set<std::string>{"tree.txt"});
  int last = -1;
  const std::string text = Export([&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    while (!box.Ended()) {
      EXPECT_GT(*box.Progress(), last);
      last = *box.Progress();
      EXPECT_EQ(ReadAll(m_directory.File("tree.txt")), "old");
      m_host.TickTimers();
    }
  });
  EXPECT_GT(last, 900);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4 + kMany);
  EXPECT_TRUE(text.ends_with("|   |   |   |   |- 10000\n"));
}

TEST_F(ProcViewLong, ATraceIsLookedForInPartsWhereNumbersBeganAnewTwice) {
  AddThreeRuns();
  Open();
  for (const char* text : {"desk", "shop", kProcess, kThread, "TID two - 0 ps"}) Expand(text);
  Select("desk");
  TraceEvent_i* const target = m_document.m_traces[3 * kMany - 1];
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Message(), "Looking for the trace...");
    EXPECT_TRUE(m_document.IsBusy());
    dialog.OnCancel();
  });
  FollowTo(target);
  EXPECT_EQ(Selected(), "desk");
  int ticks = 0, last = -1;
  m_host.AnswerWorkBox([&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    while (!box.Ended()) {
      EXPECT_GT(*box.Progress(), last);
      last = *box.Progress();
      m_host.TickTimers();
      ++ticks;
    }
  });
  FollowTo(target);
  EXPECT_GE(ticks, 1);
  EXPECT_EQ(Selected(), "2/9999");
}

TEST_F(ProcViewLong, TheSearchThatFollowsARebuildIsDoneOverAPaintedTreeAndItsCancelSelectsNothing) {
  AddThreeRuns();
  Open();
  for (const char* text : {"desk", "shop", kProcess, kThread, "TID two - 0 ps"}) Expand(text);
  FollowTo(m_document.m_traces[3 * kMany - 1]);
  ASSERT_EQ(Selected(), "2/9999");
  m_view->OnActivateView(true, nullptr, nullptr);
  m_main.Reported();
  CTraceFilter filter;
  HideNine(filter);
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) { m_host.Finish(box); });
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Looking for the trace...");
    EXPECT_TRUE(m_tree->redraw);
    EXPECT_TRUE(m_tree->Find("desk"));
    EXPECT_EQ(m_main.Reported(), (std::vector<std::string>{"rows 30000", "filtered 1"}));
    box.OnCancel();
  });
  EXPECT_TRUE(m_view->SetFilter(filter, true));
  EXPECT_FALSE(m_tree->SelectedItem());
  EXPECT_TRUE(m_tree->Find("desk"));
  EXPECT_TRUE(m_view->IsBuilt());
}

// A hidden trace has no leaf: threads are looked through for the nearest one.
TEST_F(ProcViewLong, TheNearestOfAHiddenTraceIsFoundInPartsAsAtOnce) {
  AddThreeRuns();
  m_number = 5000;
  TraceEvent_i* const hidden = Add({.text = "hidden", .category = 9});
  HideNine(m_view->m_filter);
  Open();
  const NodePosition atOnce = const_cast<ProcModel&>(m_view->Model()).FindNode(*hidden);
  ASSERT_TRUE(atOnce);
  const ShortPieces pieces(m_host);
  int ticks = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Looking for the trace...");
    for (; !box.Ended(); ++ticks) m_host.TickTimers();
  });
  FollowTo(hidden);
  EXPECT_GE(ticks, 1);
  EXPECT_EQ(m_tree->SelectedItem(), atOnce.Node()->treeItem);
  EXPECT_EQ(Selected(), "0/4999");
}

TEST_F(ProcViewLong, TheCursorOfThePropertiesOpensALargeNodeBelowABoxAndCancelKeepsItsPlace) {
  AddMany(kMany);
  Open();
  for (const char* text : {"desk", "shop", kProcess}) Expand(text);
  Select(kThread);
  const ShortPieces pieces(m_host);
  CProcViewIterator cursor(*m_view, m_tree->SelectedItem());
  m_host.WantNoWorkBox();
  ASSERT_TRUE(cursor.HasNext());
  EXPECT_LT(m_tree->Count(), 5000U) << "to look there is no need of all";
  m_host.WantNoWorkBox(false);
  const TraceEvent_i* const before = cursor.current;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Opening...");
    box.OnCancel();
  });
  cursor.Next();
  EXPECT_TRUE(cursor.cancelled);
  EXPECT_EQ(cursor.current, before);
  EXPECT_EQ(Selected(), kThread);
  EXPECT_EQ(m_tree->Picture(), "-desk\n  -shop\n    -PID 100 - 0 ps\n      +TID one - 0 ps*\n");
  m_host.AnswerWorkBox([&](CDialog& box) { m_host.Finish(box); });
  cursor.Next();
  EXPECT_FALSE(cursor.cancelled);
  EXPECT_EQ(Selected(), "1");
  EXPECT_EQ(m_tree->Count(), 4U + kMany);
}

TEST_F(ProcViewLong, TheCursorGoesBackIntoALargeNodeBelowABoxAndCancelKeepsItsPlace) {
  AddMany(kMany);
  Add({.text = "far", .machine = 6});
  Open();
  Select("lab");
  const ShortPieces pieces(m_host);
  CProcViewIterator cursor(*m_view, m_tree->SelectedItem());
  m_host.WantNoWorkBox();
  EXPECT_TRUE(cursor.HasPrev());
  m_host.WantNoWorkBox(false);
  const TraceEvent_i* const before = cursor.current;
  // Of the levels above the first part is all; each asks, as a box comes after the first part.
  for (const bool cancels : {true, false}) {
    m_host.AnswerWorkBox([&](CDialog& box) { cancels ? box.OnCancel() : m_host.Finish(box); });
    cursor.Prev();
    EXPECT_EQ(cursor.cancelled, cancels);
    EXPECT_EQ(cursor.current == before, cancels);
    EXPECT_EQ(Selected(), cancels ? "lab" : "10000");
  }
}

// The step that measures the span to the trace before may be what opens the node.
TEST_F(ProcViewLong, PropertiesWhoseStepBackIsCancelledSayThatTheDifferenceIsNotKnown) {
  AddMany(kMany);
  Add({.text = "far", .machine = 6, .tic = 50});
  Open();
  Select("lab");
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  bool seen = false;
  m_host.AnswerDialog([&](CDialog& dialog) {
    auto& details = dynamic_cast<CTraceDetailDialog&>(dialog);
    EXPECT_EQ(details.m_ticDifference, "n/a");
    EXPECT_EQ(details.m_text, "far");
    EXPECT_TRUE(details.m_hasBack);
    m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
    details.OnBack();
    EXPECT_EQ(details.m_text, "far") << "it has not moved";
    seen = true;
  });
  m_view->OnCommand(ID_VIEW_PROPERTIES);
  EXPECT_TRUE(seen);
  EXPECT_EQ(Selected(), "lab");
}

}  // namespace
