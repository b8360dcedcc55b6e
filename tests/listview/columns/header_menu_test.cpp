#include "listview/columns/header_menu.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "listview/columns/time_columns.h"
#include "settings/registry.h"
#include "support/fake_row_list.h"
#include "support/recording_host.h"
#include "support/recording_row_list_owner.h"
#include "support/temp_dir.h"
#include "support/trace_columns.h"

namespace {

using Strings = std::vector<std::string>;

class HeaderMenuTest : public testing::Test {
 protected:
  HeaderMenuTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    g_activeColumns = kDefaultActiveColumns;
    InsertTraceColumns(m_list.Header(), 50);
  }
  ~HeaderMenuTest() override {
    g_activeColumns = kDefaultActiveColumns;
    SetSettingsFile("");
  }
  void Open(std::optional<ListColumn> column) { m_menu->Open(column, 0, 0); }
  ColumnFlags Stored() {
    ColumnFlags flags, none = {};
    NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", flags.data(), none.data(),
                sizeof flags);
    return flags;
  }

  TempDir m_dir;
  RecordingHost m_host;
  RecordingRowListOwner m_owner;
  FakeRowList m_list{m_owner};
  Strings m_told;
  std::unique_ptr<HeaderMenu> m_menu = std::make_unique<HeaderMenu>(
      m_host, m_list.Header(),
      HeaderMenu::Actions{
          IsColumnShown,
          [this](Column column, bool shown) {
            ShowColumn(column, shown);
            m_told.push_back("changed");
          },
          [this](Column column) { m_told.push_back(std::string("fit ") + InfoOf(column).header); },
          [this] { m_told.push_back("fit all"); }, [this] { m_told.push_back("order"); }});
};

TEST_F(HeaderMenuTest, OnAColumnItOffersWhatCanBeDoneWithIt) {
  Open(Column::Component);
  EXPECT_EQ(m_host.MenuText(),
            "Hide \"Component\"|Fit \"Component\"|Move \"Component\" to the End|-|Fit Columns|-|"
            "+Sev|Count|Tic Count|Tic Diff|Time|Machine|+Application|+Component|+Category|"
            "Attributes|PID|TID|(+Trace)|Source|Stack|Delta|Since|Wall Time");
}

TEST_F(HeaderMenuTest, ByTheKeyboardItLeadsFromColumnToColumn) {
  m_list.Header().SetColumnWidth(Column::Count, 0);
  Open(std::nullopt);
  EXPECT_TRUE(m_host.MenuText().starts_with(
      "Hide \"Sev\"|Fit \"Sev\"|Move \"Sev\" to the End|-|Next Column \"Tic Count\"|"
      "(Previous Column)|-|Fit Columns|-|+Sev|"))
      << m_host.MenuText();
  m_host.Choose("Next Column \"Tic Count\"");
  EXPECT_TRUE(m_host.MenuText().starts_with("Hide \"Tic Count\"|")) << m_host.MenuText();
  m_host.Choose("Previous Column \"Sev\"");
  m_host.Choose("Next Column \"Tic Count\"");
  m_host.Choose("Fit \"Tic Count\"");
  EXPECT_EQ(m_told, Strings{"fit Tic Count"});
  Open(std::nullopt);
  EXPECT_TRUE(m_host.MenuText().starts_with("Hide \"Tic Count\"|")) << "where it was last";
  m_list.Header().SetColumnWidth(Column::TicCount, 0);
  Open(std::nullopt);
  EXPECT_TRUE(m_host.MenuText().starts_with("Hide \"Sev\"|")) << "that one is hidden now";
}

TEST_F(HeaderMenuTest, FromTheLastColumnOnTheScreenThereIsNoNextOne) {
  ListOrder order = m_list.Header().GetColumnOrder();
  std::ranges::reverse(order);
  m_list.Header().SetColumnOrder(order);
  Open(Column::Sev);
  EXPECT_EQ(m_host.MenuText().find("Next Column"), std::string::npos) << "the mouse needs none";
  Open(std::nullopt);
  EXPECT_NE(m_host.MenuText().find("(Next Column)|Previous Column \"Count\"|"), std::string::npos)
      << m_host.MenuText();
}

TEST_F(HeaderMenuTest, HideIsStoredAsTheOptionsStoreItAndToldToAll) {
  Open(Column::Component);
  m_host.Choose("Hide \"Component\"");
  EXPECT_EQ(m_told, Strings{"changed"});
  EXPECT_FALSE(IsColumnShown(Column::Component));
  ColumnFlags wanted = kDefaultActiveColumns;
  wanted[static_cast<std::size_t>(Column::Component)] = 0;
  EXPECT_EQ(Stored(), wanted);
  EXPECT_EQ(g_activeColumns, wanted);
}

TEST_F(HeaderMenuTest, AnyColumnIsShownAndHiddenByItsName) {
  Open(std::nullopt);
  m_host.Choose("Stack");
  EXPECT_TRUE(IsColumnShown(Column::Stack));
  Open(std::nullopt);
  m_host.Choose("Stack");
  EXPECT_FALSE(IsColumnShown(Column::Stack));
  Open(std::nullopt);
  m_host.Choose("Delta");
  EXPECT_TRUE(IsTimeColumnShown(Column::Delta));
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns) << "those of times have a value of their own";
  EXPECT_EQ(m_told, (Strings{"changed", "changed", "changed"}));
}

TEST_F(HeaderMenuTest, TraceCannotBeHidden) {
  Open(Column::Trace);
  EXPECT_TRUE(m_host.MenuText().starts_with("(Hide \"Trace\")|Fit \"Trace\"|"))
      << m_host.MenuText();
  EXPECT_NE(m_host.MenuText().find("(+Trace)"), std::string::npos);
}

TEST_F(HeaderMenuTest, WhereAStoreHidesTraceItCanBeShownAgain) {
  g_activeColumns[static_cast<std::size_t>(Column::Trace)] = 0;
  Open(std::nullopt);
  m_host.Choose("Trace");
  EXPECT_TRUE(IsColumnShown(Column::Trace));
}

TEST_F(HeaderMenuTest, AColumnIsFittedAloneOrWithTheOthers) {
  Open(Column::Time);
  m_host.Choose("Fit \"Time\"");
  Open(Column::Time);
  m_host.Choose("Fit Columns");
  EXPECT_EQ(m_told, (Strings{"fit Time", "fit all"}));
}

TEST_F(HeaderMenuTest, AColumnThatIsInTheWayMovesToTheEnd) {
  Open(Column::Count);
  m_host.Choose("Move \"Count\" to the End");
  EXPECT_EQ(m_list.GetColumnOrder(), (ListOrder{0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 1}));
  EXPECT_EQ(m_told, Strings{"order"});
  Open(Column::Count);
  EXPECT_NE(m_host.MenuText().find("(Move \"Count\" to the End)"), std::string::npos)
      << "it is there";
}

TEST_F(HeaderMenuTest, AnOpenMenuDoesNothingAfterItsListHasGone) {
  Open(Column::Count);
  m_menu.reset();
  m_host.Choose("Hide \"Count\"");
  m_host.Choose("Fit Columns");
  EXPECT_EQ(m_told, Strings{});
}

}  // namespace
