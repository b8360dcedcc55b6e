#include "symbols/recorded_stack.h"

#include <gtest/gtest.h>

namespace {

constexpr char kId[] = "0a1b2c3d4e5f60718293a4b5c6d7e8f901234567";

// "PATH BUILDID ADDRESS" for each line, "!" after the address if interrupted; "-" if it names none.
std::string Read(const std::string& text) {
  const RecordedStack stack = ReadStack(text);
  std::string read;
  for (const StackFrame& frame : stack.frames) {
    if (!read.empty()) read += "; ";
    if (!frame.IsKnown()) {
      read += "-";
      continue;
    }
    const StackModule& module = stack.modules.at(frame.module);
    char address[32];
    std::snprintf(address, sizeof address, "%llx", static_cast<unsigned long long>(frame.address));
    read += module.path + " " + module.buildId.substr(0, 4) + " " + address +
            (frame.interrupted ? "!" : "");
  }
  return read;
}

std::string Named(const std::string& start) {
  return start + " [" + kId + "]";
}

TEST(RecordedStack, ALineNamesItsModuleAndLaterOnesTheLastOfThatName) {
  EXPECT_EQ(Read(Named("/usr/bin/orders+0x12ab") + "\norders+0x12f0\n" +
                 Named("/lib/libc.so.6+0x27305") + "\norders+0x1\nlibc.so.6+0xffffffffffffffff"),
            "/usr/bin/orders 0a1b 12ab; /usr/bin/orders 0a1b 12f0; /lib/libc.so.6 0a1b 27305; "
            "/usr/bin/orders 0a1b 1; /lib/libc.so.6 0a1b ffffffffffffffff");
}

TEST(RecordedStack, OfTwoModulesWithOneNameTheLaterNamedOneHolds) {
  EXPECT_EQ(Read("/a/p.so+0x1 [aaaa]\n/b/p.so+0x2 [bbbb]\np.so+0x3\n/a/p.so+0x4 [aaaa]\np.so+0x5"),
            "/a/p.so aaaa 1; /b/p.so bbbb 2; /b/p.so bbbb 3; /a/p.so aaaa 4; /a/p.so aaaa 5");
  EXPECT_EQ(ReadStack("/a/p.so+0x1 [aaaa]\n/b/p.so+0x2 [bbbb]\n/a/p.so+0x4 [aaaa]").modules.size(),
            2u);
}

TEST(RecordedStack, AnInterruptedFrameSaysSo) {
  EXPECT_EQ(Read(Named("/usr/bin/orders+0x12ab (interrupted)") + "\norders+0x2 (interrupted)"),
            "/usr/bin/orders 0a1b 12ab!; /usr/bin/orders 0a1b 2!");
}

TEST(RecordedStack, AModuleMayHaveNoBuildIdAndAnyName) {
  EXPECT_EQ(Read("/home/a b/c++ [x]/o+0x1+0x2 [no build id]\no+0x1+0x3"),
            "/home/a b/c++ [x]/o+0x1  2; /home/a b/c++ [x]/o+0x1  3");
  EXPECT_EQ(Read(Named("linux-vdso.so.1+0x7c5")), "linux-vdso.so.1 0a1b 7c5");
}

TEST(RecordedStack, LinesOfOlderFilesAndDamagedOnesAreKeptAndNameNothing) {
  for (const std::string line :
       {"Start()+0x1a (orders)", "libc.so.6+0x2724a", "main", "Start (a.cpp:1)", "0x7f0123456789",
        "(more frames)", "+0x12 [aaaa]", "/a+0x [aaaa]", "/a+0x12 [aaa]", "/a+0x12 [AAAA]",
        "/a+0x12 [aaaa] ", "/a+0x1g [aaaa]", "/a+0x12345678901234567 [aaaa]", "/a+0x1 []", "]",
        " []", ""}) {
    EXPECT_EQ(Read(line + "\n"), "-") << line;
    const RecordedStack stack = ReadStack(line + "\n");
    ASSERT_EQ(stack.frames.size(), 1u);
    EXPECT_EQ(stack.frames[0].line, line);
  }
  EXPECT_TRUE(ReadStack("").frames.empty());
}

TEST(RecordedStack, APathThatIsLongerThanAnyPathNamesNothing) {
  EXPECT_EQ(Read("/" + std::string(4095, 'a') + "+0x1 [aaaa]").substr(0, 3), "/aa");
  EXPECT_EQ(Read("/" + std::string(4096, 'a') + "+0x1 [aaaa]"), "-");
}

}  // namespace
