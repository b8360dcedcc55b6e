#include "documents/trace_doc.h"

#include "documents_fixture.h"

namespace {

TraceEvent_i* NewTrace(std::uint32_t count = 1, const std::string& text = "up") {
  return TraceEvent_i::Create(count, 1, 2, 3, 4, PackDate(2026, 11, 21), PackTime(9, 41, 7, 123), 0,
                              5, 6, kAttributeInfo, 7, 8, text, "");
}

class TraceDocTest : public DocumentsTest {
 protected:
  std::string ReportedBy(const std::function<void()>& act) {
    m_log.Clear();
    act();
    return m_log.Reported();
  }
  CTraceDoc m_document{m_host};
};

TEST_F(TraceDocTest, AnAddedTraceComesLastItsIdsAreNotedAndTheDocumentIsModified) {
  TraceEvent_i* const first = NewTrace(1);
  TraceEvent_i* const second = NewTrace(2);
  m_document.AddTrace(first);
  m_document.AddTrace(second);
  ASSERT_EQ(m_document.m_traces.size(), 2u);
  EXPECT_EQ(m_document.m_traces[0], first);
  EXPECT_EQ(m_document.m_traces[1], second);
  EXPECT_EQ(m_document.m_indexes.processes, (ProcessMap{{1, {{5, {6}}}}}));
  EXPECT_EQ(m_document.m_indexes.sourceFiles.Ids(), std::vector<NameId>{7});
  EXPECT_TRUE(m_document.IsModified());
}

TEST_F(TraceDocTest, AnAddTellsNoView) {
  ProbeView view(m_document, m_log);
  EXPECT_EQ(ReportedBy([this] { m_document.AddTrace(NewTrace()); }), "");
}

TEST_F(TraceDocTest, AClearReleasesTheTracesFirstAndThenTells1002And1003) {
  ProbeView view(m_document, m_log);
  m_document.AddTrace(NewTrace());
  std::vector<std::size_t> sizes;
  view.m_onUpdate = [&](CView* sender, unsigned, CObject* object) {
    EXPECT_EQ(sender, nullptr);
    EXPECT_EQ(object, nullptr);
    sizes.push_back(m_document.m_traces.size());
  };
  EXPECT_EQ(ReportedBy([this] { m_document.DeleteContents(); }),
            "view hint 1002\nview hint 1003\n");
  EXPECT_EQ(sizes, (std::vector<std::size_t>{0, 0}));
}

TEST_F(TraceDocTest, AClearKeepsTheNamesSoThatALaterTraceWithAnOldIdShowsItsName) {
  m_document.m_names[1].name = "web";
  m_document.AddTrace(NewTrace());
  m_document.DeleteContents();
  EXPECT_EQ(m_document.m_indexes.machines.Ids(), std::vector<NameId>{1});
  EXPECT_EQ(m_document.m_indexes.processes.size(), 1u);
  m_document.AddTrace(NewTrace());
  EXPECT_EQ(m_document.m_traces.front()->GetMachineName(m_document.m_names), "web");
  EXPECT_EQ(m_document.m_indexes.machines.Ids().size(), 1u);
}

TEST_F(TraceDocTest, ClearOnAnEmptyDocumentIsDisabled) {
  EXPECT_FALSE(IsEnabled(m_document, ID_EDIT_CLEAR_ALL));
  m_document.AddTrace(NewTrace());
  EXPECT_TRUE(IsEnabled(m_document, ID_EDIT_CLEAR_ALL));
  m_document.DeleteContents();
  EXPECT_FALSE(IsEnabled(m_document, ID_EDIT_CLEAR_ALL));
}

TEST_F(TraceDocTest, ClearOnAModifiedDocumentAsksFirstAndARefusalLeavesAllAsItWas) {
  ProbeView view(m_document, m_log);
  m_document.SetTitle("web");
  m_document.AddTrace(NewTrace());
  EXPECT_EQ(ReportedBy([this] { m_document.OnCommand(ID_EDIT_CLEAR_ALL); }), "");
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [warning] \"Save changes to web?\" (Yes, No, Cancel) -> Cancel\n");
  EXPECT_EQ(m_document.m_traces.size(), 1u);
  EXPECT_TRUE(m_document.IsModified());
  m_host.AnswerBox(BoxAnswer::No);
  m_document.OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_TRUE(m_document.m_traces.empty());
}

TEST_F(TraceDocTest, YesBeforeAClearAsksForANameAndWritesACopy) {
  m_document.m_loading = false;
  m_document.SetTitle("web");
  m_document.AddTrace(NewTrace());
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerFileDialog(m_temp.File("kept.trc"));
  m_document.OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_EQ(m_host.m_fileRequests.at(0).title, "Save Copy As");
  EXPECT_EQ(std::filesystem::file_size(m_temp.File("kept.trc")), 16u + 45u + 2u);
  EXPECT_EQ(m_document.GetTitle(), "web");
  EXPECT_TRUE(m_document.m_traces.empty());
}

TEST_F(TraceDocTest, WithQuickCloseSetNoDocumentAsks) {
  m_document.AddTrace(NewTrace());
  EXPECT_FALSE(m_document.SaveModified());
  m_host.ClearTranscript();
  g_quickClose = true;
  EXPECT_TRUE(m_document.SaveModified());
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(TraceDocTest, SynchronizeIsCheckedByItsFlagAndEnabledWithMoreThanOneView) {
  ProbeView first(m_document, m_log);
  EXPECT_FALSE(IsEnabled(m_document, ID_VIEW_SYNCHRONIZE));
  EXPECT_FALSE(IsChecked(m_document, ID_VIEW_SYNCHRONIZE));
  m_document.m_synchronize = true;
  EXPECT_FALSE(IsEnabled(m_document, ID_VIEW_SYNCHRONIZE)) << "one view";
  EXPECT_TRUE(IsChecked(m_document, ID_VIEW_SYNCHRONIZE)) << "with its check mark";
  ProbeView second(m_document, m_log);
  EXPECT_TRUE(IsEnabled(m_document, ID_VIEW_SYNCHRONIZE));
  EXPECT_FALSE(m_document.OnCommand(ID_VIEW_SYNCHRONIZE)) << "the view takes the command";
}

TEST_F(TraceDocTest, AfterAClearSynchronizeKeepsItsState) {
  m_document.m_synchronize = true;
  m_document.AddTrace(NewTrace());
  m_document.DeleteContents();
  EXPECT_TRUE(m_document.m_synchronize);
}

TEST_F(TraceDocTest, BothSaveCommandsAskForAFileEachTimeAndNeverRename) {
  m_document.m_loading = false;
  for (const unsigned command : {unsigned{ID_FILE_SAVE}, unsigned{ID_FILE_SAVECOPY}}) {
    m_document.SetTitle("Traces sent to web");
    m_host.m_fileRequests.clear();
    EXPECT_TRUE(IsEnabled(m_document, command));
    for (const char* name : {"a.trc", "b.trc"}) {
      m_host.AnswerFileDialog(m_temp.File(name));
      EXPECT_TRUE(m_document.OnCommand(command));
      EXPECT_EQ(std::filesystem::file_size(m_temp.File(name)), 16u);
      std::filesystem::remove(m_temp.File(name));
    }
    EXPECT_EQ(m_host.m_fileRequests.size(), 2u);
    EXPECT_EQ(m_host.m_fileRequests.at(0).title, "Save Copy As");
    EXPECT_TRUE(m_host.m_fileRequests.at(0).save);
    EXPECT_EQ(m_document.GetTitle(), "Traces sent to web");
    EXPECT_EQ(m_document.GetPathName(), "");
    EXPECT_TRUE(m_app.RecentFiles().empty());
  }
}

TEST_F(TraceDocTest, ANewTraceDocumentIsLoadingEmptyAndNotSynchronized) {
  EXPECT_TRUE(m_document.m_loading);
  EXPECT_TRUE(m_document.m_traces.empty());
  EXPECT_FALSE(m_document.m_synchronize);
  EXPECT_TRUE(m_document.OnNewDocument());
  EXPECT_FALSE(m_document.IsModified());
}

TEST_F(TraceDocTest, AHintBorrowsItsTracesAndThoseThatFollowReachAllButTheSender) {
  ProbeView list(m_document, m_log, "list"), tree(m_document, m_log, "tree");
  m_document.AddTrace(NewTrace());
  CTraceHint hint(m_document.m_traces.front());
  tree.m_onUpdate = [this](CView*, unsigned, CObject* object) {
    const auto* reported = dynamic_cast<CTraceHint*>(object);
    ASSERT_NE(reported, nullptr);
    EXPECT_EQ(reported->m_events.at(0), m_document.m_traces.front());
  };
  EXPECT_EQ(ReportedBy([&] { m_document.UpdateAllViews(&list, kHintFollow, &hint); }),
            "tree hint 1006 from list with object\n");
  EXPECT_EQ(ReportedBy([&] { m_document.UpdateAllViews(nullptr, kHintAdded, &hint); }),
            "list hint 1004 with object\ntree hint 1004 with object\n");
  EXPECT_EQ(ReportedBy([&] { m_document.UpdateAllViews(nullptr, kHintTrimmed, &hint); }),
            "list hint 1005 with object\ntree hint 1005 with object\n");
}

TEST_F(TraceDocTest, TheNumbersOfHintsAndMessagesAreFixed) {
  EXPECT_EQ(kHintOptions, 1001u);
  EXPECT_EQ(kHintReady, 1002u);
  EXPECT_EQ(kHintCleared, 1003u);
  EXPECT_EQ(kHintAdded, 1004u);
  EXPECT_EQ(kHintTrimmed, 1005u);
  EXPECT_EQ(kHintFollow, 1006u);
  EXPECT_EQ(WM_TRACE_UPDATE, 1128u);
  EXPECT_EQ(WM_TRACE_PROGRESS, 1129u);
  EXPECT_EQ(ID_FILE_SAVE, 57603u);
  EXPECT_EQ(ID_FILE_SAVECOPY, 32809u);
  EXPECT_EQ(ID_EDIT_CLEAR_ALL, 57633u);
  EXPECT_EQ(ID_VIEW_SYNCHRONIZE, 32825u);
}

// A trace that tells when it is released.
class CountedTrace : public _TraceEvent_t {
 public:
  explicit CountedTrace(int& released) : _TraceEvent_t(kRecord), m_released(released) {}
  void Release() override {
    ++m_released;
    delete this;
  }

 private:
  static constexpr std::uint8_t kRecord[kTraceFixedBytes] = {};
  int& m_released;
};

TEST_F(TraceDocTest, EveryTraceIsReleasedOnceByAClearOrByTheEnd) {
  int released = 0;
  {
    CTraceDoc document(m_host);
    document.AddTrace(new CountedTrace(released));
    document.AddTrace(new CountedTrace(released));
    document.DeleteContents();
    EXPECT_EQ(released, 2);
    document.AddTrace(new CountedTrace(released));
  }
  EXPECT_EQ(released, 3);
}

}  // namespace
