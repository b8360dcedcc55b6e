// The journal's export form: fields of text and of bytes, lengths that lie, and other lines
// between.
#include "import/journal_export.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <random>
#include <string>

namespace {

std::string Number(std::uint64_t number) {
  std::string bytes;
  for (int i = 0; i < 8; ++i) bytes.push_back(static_cast<char>(number >> (8 * i)));
  return bytes;
}

std::string Bytes(const std::string& name, const std::string& value) {
  return name + "\n" + Number(value.size()) + value + "\n";
}

// "1: line" each, a cut one with "cut" before it.
std::string LinesOf(const std::string& input) {
  std::FILE* const file = std::tmpfile();
  EXPECT_EQ(std::fwrite(input.data(), 1, input.size(), file), input.size());
  std::rewind(file);
  LineReader reader(fileno(file), [] { return true; });
  JournalExport entries(reader);
  InputLine line;
  std::string lines;
  while (entries.Next(line))
    lines += std::to_string(entries.Number()) + ": " + (line.cut ? "cut " : "") +
             std::string(line.text) + "\n";
  std::fclose(file);
  return lines;
}

TEST(JournalExport, AnEntryBecomesOneObject) {
  EXPECT_EQ(LinesOf("__REALTIME_TIMESTAMP=17\nMESSAGE=a \"b\" = c\\\nPRIORITY=6\n\n"
                    "MESSAGE=second\n"),
            "1: {\"__REALTIME_TIMESTAMP\":\"17\",\"MESSAGE\":\"a \\\"b\\\" = c\\\\\","
            "\"PRIORITY\":\"6\"}\n"
            "5: {\"MESSAGE\":\"second\"}\n");
}

TEST(JournalExport, AFieldOfBytesHasItsLength) {
  EXPECT_EQ(LinesOf(Bytes("MESSAGE", "two\nlines\n!") + "PRIORITY=6\n\n" + Bytes("A", "") +
                    Bytes("B", std::string("\xff\0", 2)) + "\nC=x"),
            "1: {\"MESSAGE\":\"two\\u000alines\\u000a!\",\"PRIORITY\":\"6\"}\n"
            "7: {\"A\":\"\",\"B\":[255,0]}\n"
            "12: {\"C\":\"x\"}\n");
}

TEST(JournalExport, OtherLinesStayAsTheyAre) {
  EXPECT_EQ(LinesOf("{\"MESSAGE\":\"json\"}\nMESSAGE=x\n-- boot --\nlower=1\n\n"),
            "1: {\"MESSAGE\":\"json\"}\n2: {\"MESSAGE\":\"x\"}\n3: -- boot --\n4: lower=1\n5: \n");
}

TEST(JournalExport, ALengthThatTheInputDoesNotKeepLosesNothing) {
  for (const std::uint64_t lie : {std::uint64_t{4}, std::uint64_t{6}, std::uint64_t{5000},
                                  std::uint64_t{1} << 40, ~std::uint64_t{0}})
    EXPECT_EQ(LinesOf("A=1\nMESSAGE\n" + Number(lie) + "hello\nB=2\n"),
              "1: {\"A\":\"1\"}\n2: MESSAGE\n3: " + Number(lie) + "hello\n4: {\"B\":\"2\"}\n")
        << lie;
  EXPECT_EQ(LinesOf("MESSAGE\nabc"), "1: MESSAGE\n2: abc\n");
  EXPECT_EQ(LinesOf("MESSAGE\n"), "1: MESSAGE\n");
}

TEST(JournalExport, AnEntryThatIsTooLongIsCut) {
  const std::string big(LineReader::kLineBytesMax, 'x');
  EXPECT_EQ(LinesOf("A=1\n" + Bytes("MESSAGE", big) + "B=2\n\nC=3\n"),
            "1: cut {\"A\":\"1\",\"B\":\"2\"}\n6: {\"C\":\"3\"}\n");
}

TEST(JournalExport, AnyBytesAreReadToTheEnd) {
  std::mt19937 random(7);
  const std::string parts[] = {"A", "\n", "=", "x", Number(1), Number(3), "{}", "\n\n", "\xff"};
  for (int round = 0; round < 3000; ++round) {
    std::string input;
    for (unsigned i = random() % 30; i > 0; --i) input += parts[random() % std::size(parts)];
    const std::string lines = LinesOf(input);
    EXPECT_EQ(lines.empty(), input.empty());
  }
}

}  // namespace
