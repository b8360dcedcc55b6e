// The text of a call stack, as the traced program writes it.
#include "quor/runtime/process/stack.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kBytes = 65535;
char g_text[kBytes];

__attribute__((noinline)) std::string TextFromHere(std::size_t size = kBytes) {
  return {g_text, StackText(g_text, size, __builtin_return_address(0))};
}

// Not the last call, so that each level has a frame.
__attribute__((noinline)) std::string TextBelow(int levels, std::size_t size = kBytes) {
  std::string text = levels == 0 ? TextFromHere(size) : TextBelow(levels - 1, size);
  asm volatile("" ::: "memory");
  return text;
}

std::vector<std::string> StackLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find('\n', begin)) != text.npos; begin = end + 1)
    lines.push_back(text.substr(begin, end - begin));
  lines.push_back(text.substr(begin));
  return lines;
}

std::string ThisProgram() {
  return std::filesystem::canonical("/proc/self/exe").string();
}

TEST(StackText, AModuleIsNamedByPathAndBuildIdOnceAndByItsNameFromThenOn) {
  PrimeStack();
  const auto lines = StackLines(TextBelow(5));
  ASSERT_GT(lines.size(), 7u);
  std::smatch match;
  ASSERT_TRUE(
      std::regex_match(lines[0], match, std::regex("(.*)\\+0x[0-9a-f]+ \\[([0-9a-f]{40})\\]")))
      << lines[0];
  EXPECT_EQ(match[1], ThisProgram());
  for (int i = 1; i < 6; ++i)
    EXPECT_TRUE(std::regex_match(lines[static_cast<std::size_t>(i)],
                                 std::regex("quor_runtime_tests\\+0x[0-9a-f]+")))
        << lines[static_cast<std::size_t>(i)];
  // The id stands in the file behind the note's owner.
  std::ifstream file(ThisProgram(), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::string note("GNU\0", 4);
  for (std::size_t i = 0; i < 40; i += 2)
    note.push_back(static_cast<char>(std::stoi(match[2].str().substr(i, 2), nullptr, 16)));
  EXPECT_NE(bytes.find(note), bytes.npos);
}

TEST(StackText, AnotherModuleOfTheStackHasItsOwnBuildId) {
  const std::string text = TextBelow(0);
  EXPECT_TRUE(std::regex_search(
      text, std::regex("\n/[^\n]*/libc\\.so\\.6\\+0x[0-9a-f]+ \\[[0-9a-f]{40}\\]")))
      << text;
}

TEST(StackText, AFrameThatASignalInterruptedSaysSo) {
  static std::size_t size;
  struct sigaction action {};
  // A handler may not allocate.
  action.sa_handler = [](int) { size = StackText(g_text, kBytes, __builtin_return_address(0)); };
  struct sigaction before {};
  sigaction(SIGUSR1, &action, &before);
  raise(SIGUSR1);
  sigaction(SIGUSR1, &before, nullptr);
  const std::string text(g_text, size);
  std::size_t interrupted = 0;
  for (const std::string& line : StackLines(text))
    interrupted += line.find(" (interrupted)") != line.npos;
  // The frame that the signal hit, and the code to which the kernel returns.
  EXPECT_GE(interrupted, 1u) << text;
  EXPECT_EQ(TextBelow(3).find("(interrupted)"), std::string::npos);
}

TEST(StackText, FramesThatHaveNoRoomAreTold) {
  const auto deep = StackLines(TextBelow(300));
  EXPECT_GT(deep.size(), 100u);
  EXPECT_EQ(deep.back(), "(more frames)");
  const auto narrow = StackLines(TextBelow(20, ThisProgram().size() + 150));
  ASSERT_GT(narrow.size(), 2u);
  EXPECT_EQ(narrow.back(), "(more frames)");
  EXPECT_EQ(narrow[narrow.size() - 2].find("quor_runtime_tests+0x"), 0u);
  for (std::size_t size = 0; size < 400; ++size) {
    std::fill(std::begin(g_text), std::end(g_text), '!');
    const std::string cut = TextBelow(4, size);
    EXPECT_LE(cut.size(), size);
    EXPECT_EQ(g_text[size], '!') << size;
  }
}

TEST(StackText, NothingIsAllocated) {
  PrimeStack();
  const std::size_t before = mallinfo2().uordblks;
  const std::size_t used = StackText(g_text, kBytes, nullptr);
  EXPECT_EQ(mallinfo2().uordblks, before);
  EXPECT_GT(used, 0u);
}

}  // namespace
