// The examples of the pages and of the help that work on files do what they say: each is run as it
// stands, in one folder, on the sample that the guide begins with. Those of live commands need a
// service and another machine and are not run here.
#include <stdlib.h>

#include <set>

#include "run_trc.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

const std::set<std::string> kOnFiles = {"gen",  "info", "dump",    "find",
                                        "tree", "save", "convert", "export"};

// The lines of a page that begin with trc, wherever it lies, and have a command for files.
std::vector<std::string> ExamplesIn(const std::string& page) {
  std::vector<std::string> examples;
  for (std::string line : LinesOf(page)) {
    line.erase(0, line.find_first_not_of(' '));
    const std::string program = line.substr(0, line.find(' '));
    if (program != "trc" && !program.ends_with("/trc")) continue;
    line.erase(0, program.size() + 1);
    if (kOnFiles.contains(line.substr(0, line.find(' ')))) examples.push_back("trc " + line);
  }
  return examples;
}

class TrcExamples : public testing::Test {
 protected:
  TrcExamples() {
    for (const char* name : {"sample.trc", "web.trc", "db.trc"})
      EXPECT_EQ(RunTrc({"gen", "-n", "200000", "-s", "7", m_temp.File(name)}).status, 0);
    EXPECT_EQ(RunTrc({"gen", "-n", "1000", "--old", m_temp.File("old.trc")}).status, 0);
  }

  // As a person types it. A filter of JSON behind it need not be installed.
  void Run(const std::string& example) const {
    const std::string script = m_temp.File("script.sh"), told = m_temp.File("told");
    std::ofstream(script) << "cd '" << m_temp.Path() << "'\ntrc() { \"$TRC\" \"$@\"; }\n"
                          << "jq() { cat >/dev/null; }\n"
                          << example << "\n";
    const std::string command = "sh '" + script + "' >/dev/null 2>'" + told + "'";
    EXPECT_EQ(system(command.c_str()), 0) << example << "\n" << ReadAll(told);
    EXPECT_EQ(ReadAll(told), "") << example;
  }

  TempDir m_temp;
};

TEST_F(TrcExamples, OfThePages) {
  const fs::path root = fs::path(getenv("TRC_PACKAGING")).parent_path();
  std::vector<fs::path> pages = {root / "README.md"};
  for (const char* folder : {"docs", "src/shell/ui/help"})
    for (const auto& entry : fs::directory_iterator(root / folder))
      if (entry.path().extension() == ".md") pages.push_back(entry.path());
  std::size_t count = 0;
  for (const fs::path& page : pages) {
    SCOPED_TRACE(page);
    for (const std::string& example : ExamplesIn(ReadAll(page.string()))) {
      Run(example);
      ++count;
    }
  }
  EXPECT_GE(count, 15u) << "the pages have examples";
}

TEST_F(TrcExamples, OfTheHelp) {
  std::vector<std::vector<std::string>> helps = {{"--help"}};
  for (const std::string& command : kOnFiles) helps.push_back({command, "--help"});
  for (const auto& help : helps) {
    const std::vector<std::string> examples = ExamplesIn(RunTrc(help).out);
    EXPECT_FALSE(examples.empty()) << help[0];
    for (const std::string& example : examples) Run(example);
  }
}

}  // namespace
