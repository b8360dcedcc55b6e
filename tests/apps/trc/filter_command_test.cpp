// The command filter: options as a filter text, and a filter text as options.
#include "run_trc.h"
#include "support/filter_text_page.h"
#include "support/make_event.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

// The traces of docs/filter-text.md, as far as the tree sees them.
class PageFile {
 public:
  explicit PageFile(const std::string& path) {
    for (const FilterTextPage::Row& row : FilterTextPage::Read().traces) {
      const auto has = [&](const char* word, int bit) {
        return row.at(6).find(word) != std::string::npos ? bit : 0;
      };
      TraceFields trace{.text = row.at(10)};
      trace.machine = Named(row.at(2));
      trace.app = Named(row.at(3));
      trace.pid = Named(row.at(4));
      trace.tid = Named(row.at(5));
      trace.component = Named(row.at(7));
      trace.category = Named(row.at(8));
      trace.attributes = static_cast<std::uint16_t>(
          has("info", kAttributeInfo) | has("warn", kAttributeWarn) |
          has("error", kAttributeError) | has("developer", kAttributeDeveloper) |
          has("verbose", kAttributeVerbose));
      m_image.Trace(trace);
    }
    m_image.WriteTo(path);
  }

 private:
  NameId Named(const std::string& name) {
    const auto [entry, isNew] = m_ids.try_emplace(name, static_cast<NameId>(m_ids.size() + 1));
    if (isNew) m_image.Name(entry->second, name);
    return entry->second;
  }

  TrcImage m_image;
  std::map<std::string, NameId> m_ids;
};

class TrcFilterText : public testing::Test {
 protected:
  TrcFilterText() { PageFile file(m_file); }

  // What the command prints, its lines with blanks between them.
  std::string Filter(std::vector<std::string> arguments, bool file = true) {
    arguments.insert(arguments.begin(), "filter");
    if (file) arguments.push_back(m_file);
    const TrcRun run = RunTrc(arguments);
    m_status = run.status;
    m_err = run.err;
    std::string all;
    for (const std::string& line : LinesOf(run.out)) all += (all.empty() ? "" : " ") + line;
    return all;
  }
  std::string Dumped(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"dump", m_file, "--format", "jsonl", "--utc"});
    return RunTrc(arguments).out;
  }
  // As a shell reads the options.
  std::string DumpedByShell(const std::string& options) {
    const std::string dump = std::string(std::getenv("TRC")) + " dump --format jsonl --utc '" +
                             m_file + "' " + options + " > '" + m_dir.File("out") + "'";
    EXPECT_EQ(std::system(("bash -c " + Quoted(dump)).c_str()), 0) << dump;
    std::ifstream out(m_dir.File("out"));
    return {std::istreambuf_iterator<char>(out), {}};
  }

  TempDir m_dir;
  const std::string m_file = m_dir.File("web.trc");
  int m_status = -1;
  std::string m_err;
};

TEST_F(TrcFilterText, EveryTextOfThePageIsTheTreeThatThePageNames) {
  const FilterTextPage page = FilterTextPage::Read();
  ASSERT_GE(page.trees.size(), 8U);
  for (const FilterTextPage::Row& row : page.trees) {
    const std::string options = Filter({"--paths", "--where", row[0]});
    if (row[1].starts_with("no:")) {
      EXPECT_EQ(m_status, 1) << row[0];
      EXPECT_EQ(options, "");
      EXPECT_NE(m_err.find("\n  " + row[0] + "\n"), std::string::npos) << m_err;
      continue;
    }
    EXPECT_EQ(m_status, 0) << m_err;
    EXPECT_EQ(options, row[1]) << row[0];
    EXPECT_EQ(DumpedByShell(options), Dumped({"--where", row[0]})) << row[0];
  }
}

TEST_F(TrcFilterText, OptionsAreWrittenAsATextThatChoosesTheSame) {
  const std::vector<std::vector<std::string>> all = {
      {"--uncheck", "All Severities/Info"},
      {"--uncheck", "", "--check", "All Components/Sql"},
      {"--uncheck", "All Threads", "--check", "All Threads/db-1/PID:4711 alice/TID:main"},
      {"--user", "alice", "--uncheck", "All Categories/Commit"},
      {"--uncheck", "All Attributes/Developer", "--uncheck", "All Applications/shop"}};
  for (const std::vector<std::string>& options : all) {
    const std::string text = Filter(options);
    EXPECT_EQ(m_status, 0) << m_err;
    EXPECT_EQ(Dumped(options), Dumped({"--where", text})) << text;
  }
  EXPECT_EQ(Filter({"--uncheck", "All Threads/web-1/PID:812/TID:7", "--where", "stack"}),
            "(machine != web-1 or pid == 812 and tid == 8) and stack");
  EXPECT_EQ(Filter({}), "");
  EXPECT_EQ(m_status, 0);
}

TEST_F(TrcFilterText, ForTracesThatStillComeNewNamesAreShown) {
  const std::vector<std::string> onlySql = {"--uncheck", "All Components", "--check",
                                            "All Components/Sql"};
  EXPECT_EQ(Filter(onlySql), "component == Sql");
  std::vector<std::string> live = onlySql;
  live.push_back("--live");
  EXPECT_EQ(Filter(live), "component not in {Cache, \"Job queue\", Net}");
  EXPECT_EQ(Filter({"--paths", "--live", "--where", "component == Sql"}), "");
  EXPECT_EQ(m_status, 1);
  EXPECT_NE(m_err.find("that come later"), std::string::npos) << m_err;
}

TEST_F(TrcFilterText, WithoutAFileATextIsCheckedAndGivenInItsNormalForm) {
  EXPECT_EQ(Filter({"--where", "NOT (severity<=info)  AND ((verbose))"}, false),
            "not severity <= info and verbose");
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(Filter({"--where", "componet == Sql"}, false), "");
  EXPECT_EQ(m_status, 2);
  EXPECT_NE(m_err.find("  componet == Sql\n  ^~~~~~~~\n"), std::string::npos) << m_err;
  EXPECT_EQ(Filter({"--uncheck", "All Severities/Info"}, false), "severity >= warn");
}

TEST_F(TrcFilterText, ThePlaceOfWhatNoTreeSaysIsMarkedAlsoOfSeveralTexts) {
  Filter({"--paths", "--where", "severity >= warn", "--where", "text contains \"x\" and verbose"});
  EXPECT_EQ(m_status, 1);
  EXPECT_NE(m_err.find("the filter dialog cannot say \"text contains\"\n"
                       "  severity >= warn and text contains \"x\" and verbose\n"
                       "                       ^~~~~~~~~~~~~~~~~\n"),
            std::string::npos)
      << m_err;
}

TEST_F(TrcFilterText, ANameThatATerminalWouldObeyIsEscapedForTheShell) {
  TrcImage image;
  image.Name(1, "it's\x1b[31m").Name(2, "Net");
  image.Trace({.text = "a", .component = 1}).Trace({.text = "b", .component = 2});
  image.WriteTo(m_file);
  const std::string options = Filter({"--paths", "--where", "component != Net"});
  EXPECT_EQ(options, "--uncheck 'All Components/Net'");
  const std::string other = Filter({"--paths", "--where", "component == Net"});
  EXPECT_EQ(other, "--uncheck $'All Components/it\\'s\\x1b[31m'");
  EXPECT_EQ(DumpedByShell(other), Dumped({"--where", "component == Net"}));
}

TEST_F(TrcFilterText, AWrongPathAndAMissingFileAreTold) {
  Filter({"--uncheck", "All Components/Sqll"});
  EXPECT_EQ(m_status, 2);
  EXPECT_NE(m_err.find("near it: \"All Components/Sql\""), std::string::npos) << m_err;
  EXPECT_EQ(RunTrc({"filter", m_dir.File("none.trc")}).status, 2);
}

}  // namespace
