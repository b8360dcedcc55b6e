#include "tree/filter/filter_dialog.h"

#include <gtest/gtest.h>

#include "documents/trace_doc.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "tree/filter/filter_tree_text.h"

namespace {

using Labels = std::vector<std::string>;

const Labels kSeverities = {"All Severities"};
const Labels kWarn = {"All Severities", "Warn"};
const Labels kComponents = {"All Components"};

class FilterDialog : public testing::Test {
 protected:
  FilterDialog() {
    m_names = {{1, {"host-b"}}, {2, {"Host-a"}}, {3, {"net"}},  {4, {"Db"}},  {5, {"open"}},
               {6, {"shop"}},   {7, {"900"}},    {8, {"1000"}}, {9, {"tid"}}, {10, {"main"}}};
  }
  // Two machines, one of them with two processes.
  void FillFilter() {
    m_filter.components = {{3, 1}, {4, 1}};
    m_filter.categories = {{5, 1}};
    m_filter.applications = {{6, 1}};
    m_filter.threads[1].processes[7].threadMarks = {{9, 1}, {10, 1}};
    m_filter.threads[1].processes[8];
    m_filter.threads[2];
  }
  // What the user does while the dialog is up; OK unless the script cancels.
  int Run(const RecordingHost::DialogScript& script) {
    m_host.AnswerDialog([&](CDialog& dialog) {
      script(dialog);
      if (!dialog.Ended()) dialog.OnOK();
    });
    CFilterDialog dialog(m_host, m_filter, m_names);
    return dialog.DoModal();
  }
  static CFilterDialog& As(CDialog& dialog) { return dynamic_cast<CFilterDialog&>(dialog); }
  static void Click(CDialog& dialog, const Labels& labels) {
    EXPECT_TRUE(As(dialog).OnTreeClick(&NodeAt(As(dialog), labels), true));
  }
  static std::string Text(CDialog& dialog) { return TreeText(As(dialog).Tree().Root()); }
  // One node: "[x] Warn".
  static std::string Node(CDialog& dialog, const Labels& labels) {
    const FilterNode& node = NodeAt(As(dialog), labels);
    return BoxText(node.State()) + node.Label();
  }

  RecordingHost m_host;
  CTraceFilter m_filter;
  NameMap m_names;
};

TEST_F(FilterDialog, ANewFilterShowsTheSixBranchesChecked) {
  Run([](CDialog& dialog) {
    EXPECT_EQ(Text(dialog),
              "[x] All Traces\n"
              "  [x] All Severities\n"
              "    [x] Info\n"
              "    [x] Warn\n"
              "    [x] Error\n"
              "  [x] All Attributes\n"
              "    [x] Developer\n"
              "    [x] Verbose\n"
              "  [x] All Components\n"
              "  [x] All Categories\n"
              "  [x] All Applications\n"
              "  [x] All Threads\n");
  });
}

TEST_F(FilterDialog, NamesStandInOrderAndProcessesAndThreadsHaveTheirPrefix) {
  FillFilter();
  Run([](CDialog& dialog) {
    const std::string text = Text(dialog);
    EXPECT_EQ(text.substr(text.find("  [x] All Components")),
              "  [x] All Components\n"
              "    [x] Db\n"
              "    [x] net\n"
              "  [x] All Categories\n"
              "    [x] open\n"
              "  [x] All Applications\n"
              "    [x] shop\n"
              "  [x] All Threads\n"
              "    [x] Host-a\n"
              "    [x] host-b\n"
              "      [x] PID:1000\n"
              "      [x] PID:900\n"
              "        [x] TID:main\n"
              "        [x] TID:tid\n");
  });
}

TEST_F(FilterDialog, TheTextsAreExact) {
  EXPECT_STREQ(CFilterDialog::kCaption, "Filter");
  EXPECT_STREQ(CFilterDialog::kText,
               "Check the types you want to include in the trace output (selecting a node "
               "automatically includes all child nodes):");
  EXPECT_EQ(CFilterDialog::kTree, 1112u);
}

TEST_F(FilterDialog, TheStatesAreThoseOfTheFourImages) {
  EXPECT_EQ(static_cast<unsigned>(FilterState::Unchecked), 4096u);
  EXPECT_EQ(static_cast<unsigned>(FilterState::Checked), 8192u);
  EXPECT_EQ(static_cast<unsigned>(FilterState::Partial), 12288u);
}

TEST_F(FilterDialog, AnIdThatTheMapLacksGetsADefaultEntryAndAnEmptyLabel) {
  m_filter.components[77] = 1;
  m_filter.threads[78].processes[79].threadMarks[80] = 1;
  Run([](CDialog& dialog) {
    EXPECT_EQ(Node(dialog, {"All Components", ""}), "[x] ");
    EXPECT_EQ(Node(dialog, {"All Threads", "", "PID:", "TID:"}), "[x] TID:");
  });
  for (const NameId id : {77, 78, 79, 80}) {
    ASSERT_EQ(m_names.count(id), 1u) << id;
    EXPECT_EQ(m_names[id].name, "");
    EXPECT_EQ(m_names[id].written, 0u);
  }
}

TEST_F(FilterDialog, AMarkThatIsNot0IsCheckedAtFirst) {
  m_filter.allTraces = m_filter.allSeverities = 0;
  m_filter.severities = {7, 0, -1};
  Run([](CDialog& dialog) {
    EXPECT_EQ(Node(dialog, {"All Severities", "Info"}), "[x] Info");
    EXPECT_EQ(Node(dialog, {"All Severities", "Warn"}), "[ ] Warn");
    EXPECT_EQ(Node(dialog, {"All Severities", "Error"}), "[x] Error");
  });
}

TEST_F(FilterDialog, ThePassStopsAtACheckedNodeAndWhatIsBelowShowsItsOwnMark) {
  m_filter.severities[1] = 0;
  Run([](CDialog& dialog) {
    EXPECT_EQ(Node(dialog, {}), "[x] All Traces");
    EXPECT_EQ(Node(dialog, kSeverities), "[x] All Severities");
    EXPECT_EQ(Node(dialog, kWarn), "[ ] Warn");
  });
}

TEST_F(FilterDialog, UncheckingWarnMakesItsParentsPartialAndOkWritesWhatStands) {
  FillFilter();
  EXPECT_EQ(Run([](CDialog& dialog) {
              Click(dialog, kWarn);
              EXPECT_EQ(Node(dialog, {}), "[-] All Traces");
              EXPECT_EQ(Node(dialog, kSeverities), "[-] All Severities");
              EXPECT_EQ(Node(dialog, kComponents), "[x] All Components");
              EXPECT_EQ(Node(dialog, {"All Threads"}), "[x] All Threads");
            }),
            CDialog::kIdOk);
  EXPECT_EQ(m_filter.allTraces, 0);
  EXPECT_EQ(m_filter.allSeverities, 0);
  EXPECT_EQ(m_filter.severities, (std::vector<int>{1, 0, 1}));
  EXPECT_EQ(m_filter.allAttributes, 1);
  EXPECT_EQ(m_filter.attributes, (std::vector<int>{1, 1, 1, 1, 1}));
  EXPECT_EQ(m_filter.allComponents, 1);
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 1}, {4, 1}}));
  EXPECT_EQ(m_filter.allCategories, 1);
  EXPECT_EQ(m_filter.allApplications, 1);
  EXPECT_EQ(m_filter.allThreads, 1);
  EXPECT_EQ(m_filter.threads[1].allProcesses, 1);
}

TEST_F(FilterDialog, CheckingItAgainMakesAllChecked) {
  EXPECT_EQ(Run([](CDialog& dialog) {
              Click(dialog, kWarn);
              Click(dialog, kWarn);
              EXPECT_EQ(Node(dialog, {}), "[x] All Traces");
            }),
            CDialog::kIdOk);
  EXPECT_EQ(m_filter.allTraces, 1);
}

TEST_F(FilterDialog, AClickOnAPartialParentChecksItsWholeSubtreeAndTheNextUnchecksIt) {
  FillFilter();
  Run([](CDialog& dialog) {
    Click(dialog, {"All Threads", "host-b", "PID:900", "TID:tid"});
    EXPECT_EQ(Node(dialog, {"All Threads", "host-b"}), "[-] host-b");
    EXPECT_EQ(Node(dialog, {"All Threads", "host-b", "PID:900"}), "[-] PID:900");
    EXPECT_EQ(Node(dialog, {"All Threads", "Host-a"}), "[x] Host-a");
    Click(dialog, {"All Threads"});
    EXPECT_EQ(Node(dialog, {"All Threads", "host-b", "PID:900", "TID:tid"}), "[x] TID:tid");
    EXPECT_EQ(Node(dialog, {}), "[x] All Traces");
    Click(dialog, {"All Threads"});
    EXPECT_EQ(Node(dialog, {"All Threads", "host-b", "PID:900", "TID:tid"}), "[ ] TID:tid");
    EXPECT_EQ(Node(dialog, {}), "[-] All Traces");
  });
  EXPECT_EQ(m_filter.threads[1].processes[7].threadMarks, (std::map<NameId, int>{{9, 0}, {10, 0}}));
  EXPECT_EQ(m_filter.threads[2].allProcesses, 0);
}

TEST_F(FilterDialog, UncheckingTheRootUnchecksEverything) {
  FillFilter();
  Run([](CDialog& dialog) {
    Click(dialog, {});
    EXPECT_EQ(Text(dialog).find("[x]"), std::string::npos);
    EXPECT_EQ(Text(dialog).find("[-]"), std::string::npos);
  });
  EXPECT_EQ(m_filter.allTraces, 0);
  EXPECT_EQ(m_filter.severities, (std::vector<int>{0, 0, 0}));
  // The marks without a node stay.
  EXPECT_EQ(m_filter.attributes, (std::vector<int>{1, 0, 1, 0, 1}));
  EXPECT_EQ(m_filter.Matches(*MakeEvent({.attributes = 0})), 0);
}

TEST_F(FilterDialog, UncheckingAllChildrenOneByOneMakesTheParentUncheckedAndNotPartial) {
  FillFilter();
  Run([](CDialog& dialog) {
    Click(dialog, {"All Components", "Db"});
    EXPECT_EQ(Node(dialog, kComponents), "[-] All Components");
    Click(dialog, {"All Components", "net"});
    EXPECT_EQ(Node(dialog, kComponents), "[ ] All Components");
    EXPECT_EQ(Node(dialog, {}), "[-] All Traces");
  });
}

TEST_F(FilterDialog, AParentWithoutChildrenTogglesByItself) {
  Run([](CDialog& dialog) {
    Click(dialog, kComponents);
    EXPECT_EQ(Node(dialog, kComponents), "[ ] All Components");
    EXPECT_EQ(Node(dialog, {}), "[-] All Traces");
  });
  EXPECT_EQ(m_filter.allComponents, 0);
  EXPECT_TRUE(m_filter.components.empty());
  // Each newly met component passes all the same.
  EXPECT_EQ(m_filter.Matches(*MakeEvent({.component = 3})), 1);
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 1}}));
}

TEST_F(FilterDialog, AClickOnALabelSelectsTheNodeAndChangesNoState) {
  Run([](CDialog& dialog) {
    FilterNode& warn = NodeAt(As(dialog), kWarn);
    EXPECT_FALSE(As(dialog).OnTreeClick(&warn, false));
    EXPECT_EQ(As(dialog).Selected(), &warn);
    EXPECT_EQ(Node(dialog, kWarn), "[x] Warn");
  });
  EXPECT_EQ(m_filter.allTraces, 1);
}

TEST_F(FilterDialog, AClickOnTheBoxSelectsTheNodeToo) {
  Run([](CDialog& dialog) {
    Click(dialog, kWarn);
    EXPECT_EQ(As(dialog).Selected(), &NodeAt(As(dialog), kWarn));
  });
}

TEST_F(FilterDialog, AClickBesideTheNodesSelectsNoneAndDoesNothing) {
  Run([](CDialog& dialog) {
    Click(dialog, kWarn);
    EXPECT_FALSE(As(dialog).OnTreeClick(nullptr, true));
    EXPECT_EQ(As(dialog).Selected(), nullptr);
    EXPECT_EQ(Node(dialog, kWarn), "[ ] Warn");
  });
}

TEST_F(FilterDialog, TheKeyboardSelectsAndChangesNoState) {
  Run([](CDialog& dialog) {
    As(dialog).OnTreeSelect(&NodeAt(As(dialog), kWarn));
    EXPECT_EQ(As(dialog).Selected(), &NodeAt(As(dialog), kWarn));
    EXPECT_EQ(Node(dialog, kWarn), "[x] Warn");
  });
}

TEST_F(FilterDialog, CancelWritesNothing) {
  FillFilter();
  EXPECT_EQ(Run([](CDialog& dialog) {
              Click(dialog, {});
              dialog.OnCancel();
            }),
            CDialog::kIdCancel);
  EXPECT_EQ(m_filter.allTraces, 1);
  EXPECT_EQ(m_filter.severities, (std::vector<int>{1, 1, 1}));
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 1}, {4, 1}}));
}

TEST_F(FilterDialog, IdsThatWereMergedStayAfterCancel) {
  CTraceDoc document(m_host);
  document.AddTrace(MakeEvent({.component = 3}).release());
  m_filter.MergeDocumentNames(document);
  Run([](CDialog& dialog) { dialog.OnCancel(); });
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 1}}));
}

TEST_F(FilterDialog, AFilterWithUncheckedThreadsReopenedShowsItsParentsPartial) {
  FillFilter();
  Run([](CDialog& dialog) { Click(dialog, {"All Threads", "host-b", "PID:900", "TID:tid"}); });
  EXPECT_EQ(m_filter.allThreads, 0);
  EXPECT_EQ(m_filter.threads[1].allProcesses, 0);
  EXPECT_EQ(m_filter.threads[1].processes[7].allThreadsOfProcess, 0);
  Run([](CDialog& dialog) {
    EXPECT_EQ(Node(dialog, {}), "[-] All Traces");
    EXPECT_EQ(Node(dialog, {"All Threads"}), "[-] All Threads");
    EXPECT_EQ(Node(dialog, {"All Threads", "host-b", "PID:900"}), "[-] PID:900");
    EXPECT_EQ(Node(dialog, {"All Threads", "host-b", "PID:1000"}), "[x] PID:1000");
  });
}

TEST_F(FilterDialog, AnIdThatEntersTheFilterWhileTheDialogIsOpenHasNoNodeAndKeepsItsMark) {
  m_filter.allTraces = m_filter.allComponents = 0;
  m_filter.components = {{4, 0}};
  Run([this](CDialog& dialog) {
    EXPECT_EQ(m_filter.Matches(*MakeEvent({.component = 3})), 1);
    EXPECT_EQ(NodeAt(As(dialog), kComponents).ChildCount(), 1u);
    Click(dialog, {"All Components", "Db"});
    Click(dialog, {"All Components", "Db"});
  });
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 1}, {4, 0}}));
}

TEST_F(FilterDialog, RunAgainItShowsTheFilterAsItIsThen) {
  CFilterDialog dialog(m_host, m_filter, m_names);
  m_host.AnswerDialog([](CDialog& first) {
    Click(first, kWarn);
    first.OnCancel();
  });
  m_host.AnswerDialog([](CDialog& second) {
    EXPECT_EQ(Node(second, kWarn), "[x] Warn");
    EXPECT_EQ(As(second).Selected(), nullptr);
  });
  dialog.DoModal();
  dialog.DoModal();
}

TEST_F(FilterDialog, AsTextHandsOutWhatOkWouldLeaveAndLeavesTheMarks) {
  FillFilter();
  m_filter.allTraces = m_filter.allComponents = m_filter.components[3] = 0;
  m_host.AnswerDialog([](CDialog& dialog) {
    Click(dialog, kWarn);
    Click(dialog, {"All Components", "Db"});
    Click(dialog, {"All Components", "net"});
    As(dialog).OnAsText();
    EXPECT_TRUE(dialog.Ended());
  });
  CFilterDialog dialog(m_host, m_filter, m_names);
  CTraceFilter chosen;
  dialog.m_takeAsText = [&](const CTraceFilter& taken, std::string*) {
    chosen = taken;
    return true;
  };
  EXPECT_EQ(dialog.DoModal(), CFilterDialog::kIdAsText);
  EXPECT_EQ(chosen.severities, (std::vector<int>{1, 0, 1}));
  EXPECT_EQ(chosen.components, (std::map<NameId, int>{{3, 1}, {4, 0}}));
  EXPECT_EQ(chosen.allSeverities + chosen.allComponents + chosen.allTraces, 0);
  EXPECT_EQ(chosen.allThreads, 1);
  EXPECT_EQ(m_filter.severities, (std::vector<int>{1, 1, 1}));
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 0}, {4, 1}}));
  EXPECT_EQ(m_filter.allSeverities, 1);
  EXPECT_EQ(m_filter.threads[1].processes[7].threadMarks[9], 1);
}

TEST_F(FilterDialog, ATreeThatIsNoTextIsToldAndTheDialogStays) {
  m_host.AnswerDialog([](CDialog& dialog) {
    As(dialog).OnAsText();
    EXPECT_FALSE(dialog.Ended());
    dialog.OnCancel();
  });
  CFilterDialog dialog(m_host, m_filter, m_names);
  dialog.m_takeAsText = [](const CTraceFilter&, std::string* why) {
    *why = "two components are named Net";
    return false;
  };
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdCancel);
  EXPECT_NE(m_host.Reported().find("This tree cannot be written as a filter text: two components "
                                   "are named Net."),
            std::string::npos)
      << m_host.Reported();
}

}  // namespace
