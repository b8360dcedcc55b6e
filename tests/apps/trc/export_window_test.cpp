// "Export..." of the desktop's list and trc export write the same file.
//
// Both may hold addresses, which no two processes share: these count as alike.
#include "documents/trace_file_doc.h"
#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "run_trc.h"
#include "settings/registry.h"
#include "support/fake_row_list.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace {

std::string WithoutAddresses(std::string text) {
  for (std::size_t at = 0; (at = text.find("0x", at)) != std::string::npos;) {
    at += 2;
    text.erase(at, text.find_first_not_of("0123456789abcdef", at) - at);
  }
  return text;
}

class TrcExportAndWindow : public testing::Test {
 protected:
  TrcExportAndWindow() {
    SetSettingsFile(m_directory.File("settings.ini"));
    g_activeColumns = kDefaultActiveColumns;
    EXPECT_EQ(RunTrc({"gen", "-n", "700", "-s", "11", m_in}).status, 0);
    EXPECT_TRUE(m_document.OnOpenDocument(m_in));
    EXPECT_TRUE(m_host.RunUntil([this] { return !m_document.m_loading; }));
    ReadColumnOrder();  // the first list that is ever opened has an order of its own
    m_view.OnInitialUpdate();
  }
  ~TrcExportAndWindow() override {
    g_activeColumns = kDefaultActiveColumns;
    g_useUtc = false;
    SetSettingsFile("");
  }

  std::string WindowExport(bool hidden) {
    const std::string out = m_directory.File("window.csv");
    m_host.AnswerFileDialog(FileDialogAnswer{out, {false, hidden}});
    EXPECT_TRUE(m_view.OnCommand(ID_FILE_EXPORT));
    return ReadAll(out);
  }
  std::string TrcExport(std::vector<std::string> more) {
    const std::string out = m_directory.File("trc.csv");
    std::vector<std::string> arguments = {"export", m_in, out};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(RunTrc(arguments).status, 0);
    return ReadAll(out);
  }

  const TempDir m_directory;
  const std::string m_in = m_directory.File("in.trc");
  RecordingHost m_host;
  CTraceFileDoc m_document{m_host};
  CTraceView m_view{m_document,
                    [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); }};
};

TEST_F(TrcExportAndWindow, TheColumnsShownAtFirstAreTheSameByteForByte) {
  const std::string window = WindowExport(false);
  EXPECT_GT(LinesOf(window).size(), 700u);
  EXPECT_EQ(TrcExport({}), window);
}

TEST_F(TrcExportAndWindow, AllColumnsAreTheSameButForTheAddresses) {
  const std::string window = WindowExport(true);
  EXPECT_NE(WithoutAddresses(window), window);
  EXPECT_EQ(WithoutAddresses(TrcExport({"--hidden"})), WithoutAddresses(window));
}

TEST_F(TrcExportAndWindow, ShownColumnsAndUtcAreTheSame) {
  g_activeColumns = {};
  for (const Column column : {Column::Count, Column::Time, Column::Source, Column::Stack})
    g_activeColumns[static_cast<std::size_t>(column)] = 1;
  g_useUtc = true;
  const std::string window = WindowExport(false);
  EXPECT_GT(std::count(window.begin(), window.end(), '\n'), 100);
  EXPECT_EQ(TrcExport({"--columns", "Count,Time,Source,Stack", "--utc"}), window);
}

TEST_F(TrcExportAndWindow, AFilterLeavesTheSameRows) {
  CTraceFilter filter;
  filter.allTraces = filter.allSeverities = 0;
  filter.severities[0] = 0;
  m_view.SetFilter(filter, true);
  const std::string window = WindowExport(true);
  EXPECT_EQ(window.find("\n\"Info\","), std::string::npos);
  EXPECT_NE(window.find("\n\"Warn\","), std::string::npos);
  EXPECT_EQ(WithoutAddresses(TrcExport({"--hidden", "--uncheck", "All Severities/Info"})),
            WithoutAddresses(window));
}

}  // namespace
