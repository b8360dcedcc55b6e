#include "import/line_reader.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "support/temp_dir.h"

namespace {

using testing::ElementsAre;

class InputFile {
 public:
  explicit InputFile(const std::string& bytes)
      : m_descriptor(open(m_directory.File("in", bytes).c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~InputFile() { close(m_descriptor); }
  int Descriptor() const { return m_descriptor; }

 private:
  TempDir m_directory;
  int m_descriptor;
};

std::vector<std::string> LinesIn(const std::string& bytes) {
  const InputFile file(bytes);
  LineReader reader(file.Descriptor(), [] { return true; });
  std::vector<std::string> lines;
  for (InputLine line; reader.Next(line);) lines.emplace_back(line.text);
  EXPECT_EQ(reader.Error(), 0);
  return lines;
}

TEST(LineReader, GivesLinesWithoutTheirEndsAndTheLastOneWithoutAnEnd) {
  EXPECT_THAT(LinesIn("one\ntwo\r\n\nthree"), ElementsAre("one", "two", "", "three"));
  EXPECT_THAT(LinesIn("one\n"), ElementsAre("one"));
  EXPECT_THAT(LinesIn(""), ElementsAre());
  EXPECT_THAT(LinesIn("a\rb\r\r\n"), ElementsAre("a\rb\r"));
}

TEST(LineReader, KeepsNulBytesAndBytesThatAreNotUtf8) {
  EXPECT_THAT(LinesIn(std::string("a\0b\n\xFF\n", 6)), ElementsAre(std::string("a\0b", 3), "\xFF"));
}

TEST(LineReader, LinesOfAnyLengthAroundTheSizeOfAReadAreWhole) {
  for (const std::size_t length : {131071u, 131072u, 262143u, 262144u, 262145u, 1000000u}) {
    const std::string line(length, 'x');
    EXPECT_THAT(LinesIn("a\n" + line + "\nb\n"), ElementsAre("a", line, "b")) << length;
  }
}

TEST(LineReader, OfALineThatIsTooLongOnlyTheBeginningIsGivenAndTheNextOneIsWhole) {
  constexpr std::size_t kMost = LineReader::kLineBytesMax;
  for (const std::size_t more : {0u, 1u, 300000u, 9000000u}) {
    const InputFile file(std::string(kMost + more, 'x') + "\nnext\n");
    LineReader reader(file.Descriptor(), [] { return true; });
    InputLine line;
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ(line.text.size(), kMost);
    EXPECT_EQ(line.cut, more > 0);
    ASSERT_TRUE(reader.Next(line)) << more;
    EXPECT_EQ(line.text, "next");
    EXPECT_FALSE(line.cut);
    EXPECT_FALSE(reader.Next(line));
  }
}

TEST(LineReader, ALineThatIsTooLongMayBeTheLast) {
  const InputFile file(std::string(LineReader::kLineBytesMax + 5, 'x'));
  LineReader reader(file.Descriptor(), [] { return true; });
  InputLine line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_TRUE(line.cut);
  EXPECT_FALSE(reader.Next(line));
}

TEST(LineReader, AReadThatFailsIsAnErrorAndNoEnd) {
  const TempDir directory;
  const int folder = open(directory.Path().c_str(), O_RDONLY | O_CLOEXEC);
  LineReader reader(folder, [] { return true; });
  InputLine line;
  EXPECT_FALSE(reader.Next(line));
  EXPECT_EQ(reader.Error(), EISDIR);
  close(folder);
}

TEST(LineReader, AnInputThatGivesNothingIsLeftWhenTheUserSaysSo) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  ASSERT_EQ(write(ends[1], "one\ntw", 6), 6);
  int asked = 0;
  LineReader reader(ends[0], [&asked] { return ++asked < 4; });
  InputLine line;
  ASSERT_TRUE(reader.Next(line));
  EXPECT_EQ(line.text, "one");
  EXPECT_FALSE(reader.Next(line));
  EXPECT_TRUE(reader.Stopped());
  EXPECT_EQ(asked, 4);
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
