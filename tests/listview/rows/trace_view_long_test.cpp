// A filter that takes long: below a box, and what its Cancel leaves behind.
#include "support/folder_names.h"
#include "support/short_pieces.h"
#include "trace_view_fixture.h"
#include "tree/filter/filter_dialog.h"

namespace {

constexpr int kMany = 10000;  // some parts' worth

class TraceViewLong : public TraceViewTest {
 protected:
  TraceViewLong() {
    for (int i = 0; i < kMany; ++i) Add({.component = static_cast<NameId>(i % 2 ? 8 : 9)});
    m_nine.allTraces = m_nine.allComponents = 0;
    m_nine.components[9] = 0;
  }
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
  // Runs a command that writes `name`, whose box of long work is answered so.
  void Write(unsigned command, const std::string& name, bool selectedOnly,
             RecordingHost::DialogScript script) {
    const ShortPieces pieces(m_host);
    m_host.AnswerFileDialog(FileDialogAnswer{m_directory.File(name), {selectedOnly, false}});
    m_host.AnswerWorkBox(std::move(script));
    m_view->OnCommand(command);
  }
  std::set<std::string> Folder() const { return NamesIn(m_directory.Path()); }
  CTraceFilter m_nine;  // hides component 9
};

TEST_F(TraceViewLong, AFilterWorksInPartsBelowABox) {
  Open();
  const ShortPieces pieces(m_host);
  int ticks = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Filtering...");
    EXPECT_TRUE(m_document.IsBusy());
    while (!box.Ended()) {
      EXPECT_EQ(m_list->ItemCount(), kMany) << "the rows that stood stand until the end";
      m_host.TickTimers();
      ++ticks;
    }
  });
  EXPECT_TRUE(m_view->SetFilter(m_nine, true));
  EXPECT_GE(ticks, 2);
  EXPECT_EQ(m_list->ItemCount(), kMany / 2);
  EXPECT_EQ(m_view->RowListText(kMany / 2 - 1, Column::Count), "10000");
}

TEST_F(TraceViewLong, NothingHiddenIsNoWork) {
  const ShortPieces pieces(m_host);
  m_host.WantNoWorkBox();
  Open();
  EXPECT_EQ(m_list->ItemCount(), kMany);
}

TEST_F(TraceViewLong, ACancelledFilterLeavesRowsFocusFilterAndMarkAsTheyWere) {
  Open();
  m_view->OnActivateView(true, nullptr, nullptr);
  Focus(7);
  m_list->ScrollTo(5);
  const int top = m_list->TopIndex();
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox(Cancel);
  HideAll();
  EXPECT_EQ(m_list->ItemCount(), kMany);
  EXPECT_EQ(m_view->Rows().Size(), kMany);
  EXPECT_EQ(m_list->NextItem(-1, kRowFocused), 7);
  EXPECT_EQ(m_list->TopIndex(), top);
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_FALSE(m_view->m_filterChanged);
  HideAll();
  EXPECT_EQ(m_list->ItemCount(), 0);
  EXPECT_TRUE(m_view->m_filterChanged);
}

TEST_F(TraceViewLong, AFilterThatIsHandedOverAndCancelledLeavesFilterAndMark) {
  Open();
  m_view->m_filterChanged = true;
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox(Cancel);
  EXPECT_FALSE(m_view->SetFilter(m_nine, true));
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_TRUE(m_view->m_filterChanged);
  EXPECT_EQ(m_list->ItemCount(), kMany);
}

TEST_F(TraceViewLong, TheRowOfAFollowedTraceIsLookedForInPartsAndCancelLeavesTheSelection) {
  AddMany(kMany);
  Open();
  Focus(3);
  const ShortPieces pieces(m_host);
  int ticks = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Looking for the trace...");
    box.OnCancel();
  });
  FollowTo(m_document.m_traces[2 * kMany - 5]);
  EXPECT_EQ(States(), "3 focused selected");
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[3]);
  m_host.AnswerWorkBox([&](CDialog& box) {
    while (!box.Ended()) {
      m_host.TickTimers();
      ++ticks;
    }
  });
  FollowTo(m_document.m_traces[2 * kMany - 5]);
  EXPECT_GE(ticks, 2);
  EXPECT_EQ(States(), "19995 focused selected");
}

TEST_F(TraceViewLong, NewContentsMayComeAndTheirFilterBeCancelledWhileTheFilterDialogIsOpen) {
  Open();
  m_view->SetFilter(m_nine, true);
  const ShortPieces pieces(m_host);
  m_host.AnswerDialog([this](CDialog& dialog) {
    auto& filter = dynamic_cast<CFilterDialog&>(dialog);
    m_host.AnswerWorkBox(Cancel);
    m_view->OnUpdate(nullptr, kHintReady, nullptr);
    EXPECT_EQ(m_list->ItemCount(), kMany) << "unfiltered";
    filter.OnTreeClick(&filter.Tree().Root(), true);
    if (filter.Tree().Root().State() != FilterState::Unchecked)
      filter.OnTreeClick(&filter.Tree().Root(), true);
    filter.OnOK();
  });
  m_view->OnCommand(ID_VIEW_FILTER);
  EXPECT_EQ(m_list->ItemCount(), 0) << "what the user has chosen in the dialog";
  EXPECT_EQ(m_view->m_filter.severities, (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(m_view->m_filter.components, (std::map<NameId, int>{{8, 0}, {9, 0}}));
}

TEST_F(TraceViewLong, TheSearchThatFollowsARebuildIsDoneOverPaintedRowsAndItsCancelLeavesNoFocus) {
  AddMany(kMany);
  Open();
  m_view->OnActivateView(true, nullptr, nullptr);
  const ShortPieces pieces(m_host);
  Focus(2 * kMany - 2);
  m_main.Reported();
  m_host.AnswerWorkBox([&](CDialog& box) { m_host.Finish(box); });
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Looking for the trace...");
    EXPECT_TRUE(m_list->redraw);
    EXPECT_EQ(m_list->ItemCount(), kMany + kMany / 2);
    EXPECT_EQ(m_main.Reported(), (std::vector<std::string>{"rows 15000", "filtered 1"}));
    box.OnCancel();
  });
  EXPECT_TRUE(m_view->SetFilter(m_nine, true));
  EXPECT_EQ(m_list->ItemCount(), kMany + kMany / 2);
  EXPECT_EQ(States(), "");
  EXPECT_TRUE(m_list->redraw);
}

TEST_F(TraceViewLong, NewContentsWhoseFilterIsCancelledShowWholeAndUnfiltered) {
  Open();
  m_view->SetFilter(m_nine, true);
  m_document.m_traces.Clear();
  AddMany(kMany);
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_EQ(m_list->ItemCount(), 0) << "the traces of the old rows are gone";
    box.OnCancel();
  });
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  EXPECT_EQ(m_list->ItemCount(), kMany);
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_TRUE(m_view->m_filterChanged) << "the other view is to show the same";
}

TEST_F(TraceViewLong, ADocumentThatIsClearedMeanwhileIsFilteredAnew) {
  Open();
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    m_document.DeleteContents();
    Add({.count = 1, .component = 8});
    Add({.component = 9});
    m_host.Finish(box);
  });
  EXPECT_TRUE(m_view->SetFilter(m_nine, true));
  EXPECT_EQ(Rows(), "1");
}

TEST_F(TraceViewLong, AnExportGoesOnBelowABoxThatTellsHowFarItIs) {
  Open();
  g_activeColumns = {};
  g_activeColumns[static_cast<std::size_t>(Column::Count)] = 1;
  int last = -1, ticks = 0;
  Write(ID_FILE_EXPORT, "web.csv", false, [&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Message(), "Exporting...");
    EXPECT_TRUE(m_document.IsBusy());
    while (!box.Ended()) {
      EXPECT_FALSE(std::filesystem::exists(m_directory.File("web.csv"))) << "before it is whole";
      EXPECT_GT(*box.Progress(), last);
      last = *box.Progress();
      m_host.TickTimers();
      ++ticks;
    }
  });
  EXPECT_GT(ticks, 10);
  EXPECT_GT(last, 900);
  std::string expected = "\"Count\"\n";
  for (int i = 1; i <= kMany; ++i) expected += std::to_string(i) + "\n";
  EXPECT_EQ(ReadAll(m_directory.File("web.csv")), expected);
}

TEST_F(TraceViewLong, ACancelledExportOrSaveLeavesNoFileAndAnExistingOneAsItWas) {
  Open();
  m_list->SetItemState(-1, kRowSelected, kRowSelected);
  m_directory.File("old", "what stood there");
  const std::set<std::string> before = Folder();
  const bool modified = m_document.IsModified();
  m_host.ClearTranscript();
  for (const unsigned command :
       std::initializer_list<unsigned>{ID_FILE_EXPORT, ID_FILE_SAVE, ID_FILE_SAVECOPY})
    for (const bool selectedOnly : {false, true})
      for (const char* name : {"old", "new"}) {
        bool written = false;
        Write(command, name, selectedOnly, [&](CDialog& box) {
          m_host.TickTimers();
          written = Folder().size() > before.size();
          box.OnCancel();
        });
        EXPECT_TRUE(written);
        EXPECT_EQ(Folder(), before);
        EXPECT_EQ(ReadAll(m_directory.File("old")), "what stood there");
      }
  EXPECT_EQ(m_document.IsModified(), modified);
  EXPECT_EQ(m_host.Reported().find("box Tessera"), std::string::npos) << "the person knows";
  EXPECT_EQ(m_host.WaitCursors(), 0);
  EXPECT_FALSE(m_document.IsBusy());
}

TEST_F(TraceViewLong, ASaveOfSelectedRowsTellsHowFarItIsInTheList) {
  Open();
  for (int row = kMany / 2; row < kMany; ++row)
    m_list->SetItemState(row, kRowSelected, kRowSelected);
  bool seen = false;
  Write(ID_FILE_SAVE, "half.trc", true, [&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Message(), "Saving...");
    EXPECT_GE(*box.Progress(), 500);
    EXPECT_LT(*box.Progress(), 600);
    seen = true;
    m_host.Finish(dialog);
  });
  EXPECT_TRUE(seen);
  const std::string bytes = ReadAll(m_directory.File("half.trc"));
  EXPECT_FALSE(bytes.empty());
  Write(ID_FILE_SAVE, "all.trc", false, [&](CDialog& box) { m_host.Finish(box); });
  EXPECT_EQ(ReadAll(m_directory.File("all.trc")).size() - 16, 2 * (bytes.size() - 16));
}

}  // namespace
