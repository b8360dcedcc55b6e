// trc stack names the functions of real programs, however they were built and wherever they are.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "stack_program.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class TrcStack : public StackPrograms {
 protected:
  std::string Source(const std::string& function, int line, const char* in) const {
    return function + " at " + m_dir.File("orders.cpp") + ":" + std::to_string(line) + " (" + in +
           ")";
  }
  // The three frames of kOrders.
  void ExpectNamed(const TrcRun& run) const {
    const auto frames = FramesOf(run, "charged");
    ASSERT_GE(frames.size(), 3u) << run.out << run.err;
    EXPECT_EQ(frames[0], Source("Deepest", 6, "orders, inlined"));
    EXPECT_EQ(frames[1], Source("shop::Charge(shop::Order const&)", 10, "orders"));
    EXPECT_EQ(frames[2], Source("main", 16, "orders"));
    EXPECT_THAT(run.err, Not(HasSubstr("orders")));
    EXPECT_EQ(run.status, 0);
  }
};

TEST_F(TrcStack, NamesAProgramThatExportsNothingWithInlinedFunctionsAndLines) {
  Trace(Build("orders", kOrders));
  ExpectNamed(Stack());
}

TEST_F(TrcStack, NamesAProgramAtAFixedAddress) {
  Trace(Build("orders", kOrders, "-O2 -g -no-pie -fno-pie"));
  ExpectNamed(Stack());
}

// With a sanitizer no program can be linked statically.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(TrcStack, NamesAProgramThatIsLinkedStatically) {
  for (const char* const flags : {"-O2 -g -static", "-O2 -g -fPIE -static-pie"}) {
    Trace(BuildStatic("orders", kOrders, flags));
    ExpectNamed(Stack());
  }
}
#endif

TEST_F(TrcStack, ARecordedFrameIsShownAsItIsOnRequest) {
  Trace(Build("orders", kOrders));
  const auto frames = FramesOf(Stack({"--recorded"}), "charged");
  EXPECT_THAT(frames[0], AllOf(StartsWith(m_dir.File("orders") + "+0x"), EndsWith("]")));
  EXPECT_THAT(frames[1], StartsWith("orders+0x"));
}

TEST_F(TrcStack, FindsTheDebugInformationOfAStrippedProgramAndSaysIfThereIsNone) {
  Build("orders", kOrders);
  Do("objcopy --only-keep-debug orders orders.dbg && strip orders && "
     "objcopy --add-gnu-debuglink=orders.dbg orders");
  Trace(m_dir.File("orders"));
  ExpectNamed(Stack());
  Do("mkdir .debug && mv orders.dbg .debug");
  ExpectNamed(Stack());
  Do("mkdir symbols && mv .debug/orders.dbg symbols");
  ExpectNamed(Stack({"--symbols", m_dir.File("symbols")}));

  const TrcRun without = Stack();
  EXPECT_THAT(FramesOf(without, "charged")[0], StartsWith(m_dir.File("orders") + "+0x"));
  EXPECT_THAT(without.err, HasSubstr("trc: no debug information for orders (build id "));
  EXPECT_EQ(without.status, 0);
}

TEST_F(TrcStack, FindsDebugInformationByTheBuildIdWithoutTheProgram) {
  Trace(Build("orders", kOrders));
  const std::string recorded = FramesOf(Stack({"--recorded"}), "charged")[0];
  const std::string id = recorded.substr(recorded.find('[') + 1, 40);
  const std::string folder = "symbols/.build-id/" + id.substr(0, 2);
  Do("mkdir -p " + folder + " && objcopy --only-keep-debug orders " + folder + "/" + id.substr(2) +
     ".debug && rm orders");
  ExpectNamed(Stack({"--symbols", m_dir.File("symbols")}));
}

TEST_F(TrcStack, FindsAMovedProgramInASymbolFolderAndSaysIfItIsGone) {
  Trace(Build("orders", kOrders));
  Do("mkdir moved && mv orders moved");
  ExpectNamed(Stack({"--symbols", m_dir.File("nothing"), "--symbols", m_dir.File("moved")}));
  const TrcRun gone = Stack();
  EXPECT_THAT(FramesOf(gone, "charged")[0], StartsWith(m_dir.File("orders") + "+0x"));
  EXPECT_THAT(gone.err, HasSubstr(m_dir.File("orders") + " cannot be read here"));
}

TEST_F(TrcStack, AnotherBuildOfTheProgramGivesNoNames) {
  Trace(Build("orders", kOrders));
  std::string changed = kOrders;
  changed.replace(changed.find("Charge"), 6, "Refund")
      .replace(changed.find("::Charge") + 2, 6, "Refund");
  Build("orders", changed);
  const TrcRun run = Stack();
  EXPECT_THAT(Joined(FramesOf(run, "charged")), Not(HasSubstr("Refund")));
  EXPECT_THAT(FramesOf(run, "charged")[0], StartsWith(m_dir.File("orders") + "+0x"));
  EXPECT_THAT(run.err, HasSubstr(m_dir.File("orders") + " has changed since: its build id is "));
}

TEST_F(TrcStack, AProgramWithoutABuildIdIsNamedWithAWarning) {
  Trace(Build("orders", kOrders, "-O2 -g -Wl,--build-id=none"));
  const TrcRun run = Stack();
  EXPECT_EQ(FramesOf(run, "charged")[1], Source("shop::Charge(shop::Order const&)", 10, "orders"));
  EXPECT_THAT(run.err, HasSubstr("orders (no build id) may be another build"));
}

TEST_F(TrcStack, AFrameThatASignalInterruptedHasTheFunctionThatItWasIn) {
  // The first instruction faults: the one before it belongs to another function.
  Trace(Build("orders", R"(#include <quor/quor.h>
#include <signal.h>
#include <unistd.h>
static quor_point point = QUOR_POINT_INIT("Net", "Connect");
__attribute__((noinline)) static void Faults() { __builtin_trap(); }
static void OnFault(int) {
  quor_trace(&point, QUOR_INFO, 0, 0, "fault", 5);
  quor_flush(5000);
  _exit(0);
}
int main() {
  quor_application("orders");
  signal(SIGILL, OnFault);
  signal(SIGTRAP, OnFault);
  void (*volatile call)() = Faults;
  call();
}
)"));
  const auto frames = FramesOf(Stack(), "fault");
  EXPECT_EQ(frames[0], Source("OnFault", 7, "orders"));
  std::size_t at = 0;
  while (at + 1 < frames.size() && frames[at].find("interrupted") == std::string::npos) ++at;
  EXPECT_EQ(frames[at], Source("Faults", 5, "orders, interrupted")) << Joined(frames);
}

TEST_F(TrcStack, FramesOfTheLibrarysHeadersAreLeftOutAtTheTop) {
  for (const char* flags : {"-O0 -g", "-O2 -g"}) {
    Trace(Build("orders", R"(#include <quor/quor.hpp>
QUOR_POINT(point, "Net", "Connect");
__attribute__((noinline)) void Charge(int id) {
  QUOR_TRACE_INFO(point, "charged {}", id);
}
int main() {
  quor_application("orders");
  Charge(7);
}
)",
                flags));
    const auto frames = FramesOf(Stack(), "charged 7");
    EXPECT_EQ(frames[0], Source("Charge(int)", 4, "orders")) << flags << "\n" << Joined(frames);
    EXPECT_EQ(Joined(frames).find("quor::"), std::string::npos) << flags << "\n" << Joined(frames);
  }
}

TEST_F(TrcStack, OfTwoLibrariesAtOneAddressEachHasItsOwnNames) {
  for (const std::string name : {"Alpha", "Gamma"}) {
    m_dir.File(name + ".cpp", "extern \"C\" __attribute__((noinline)) void " + name +
                                  "(void (*trace)()) { trace(); asm volatile(\"\"); }\n"
                                  "extern \"C\" void Run(void (*trace)()) { " +
                                  name + "(trace); asm volatile(\"\"); }\n");
    Do(Variable("TEST_CXX") + " -O2 -g -shared -fPIC -o lib" + name + ".so " + name + ".cpp");
  }
  Trace(Build("orders", R"(#include <dlfcn.h>
#include <quor/quor.h>
#include <string.h>
static quor_point point = QUOR_POINT_INIT("Net", "Connect");
static const char* text;
static void Trace() {
  quor_trace(&point, QUOR_INFO, 0, 0, text, strlen(text));
  asm volatile("");
}
int main() {
  quor_application("orders");
  void* places[2];
  const char* const names[] = {"./libAlpha.so", "./libGamma.so"};
  for (int i = 0; i < 2; ++i) {
    void* const library = dlopen(names[i], RTLD_NOW);
    text = i == 0 ? "first" : "second";
    void* const run = dlsym(library, "Run");
    places[i] = run;
    reinterpret_cast<void (*)(void (*)())>(run)(Trace);
    dlclose(library);
  }
  return places[0] == places[1] ? 0 : 1;
}
)"));
  const TrcRun run = Stack();
  EXPECT_THAT(FramesOf(run, "first")[1],
              ::testing::MatchesRegex("Alpha at .*/Alpha.cpp:1 \\(libAlpha.so\\)"));
  EXPECT_THAT(FramesOf(run, "second")[1],
              ::testing::MatchesRegex("Gamma at .*/Gamma.cpp:1 \\(libGamma.so\\)"));
  EXPECT_EQ(run.err.find("lib"), std::string::npos) << run.err;
}

TEST_F(TrcStack, ATextFromStandardInputIsNamedAndOtherTextsAreKept) {
  Trace(Build("orders", kOrders));
  std::string text;
  for (const std::string& frame : FramesOf(Stack({"--recorded"}), "charged")) text += frame + "\n";
  EXPECT_EQ(LinesOf(StackOfText(text).out)[1],
            Source("shop::Charge(shop::Order const&)", 10, "orders"));
  const TrcRun old = StackOfText("Start()+0x1a (orders)\nlibc.so.6+0x2724a\nmain\n");
  EXPECT_EQ(old.out, "Start()+0x1a (orders)\nlibc.so.6+0x2724a\nmain\n");
  EXPECT_EQ(old.err, "");
  EXPECT_EQ(StackOfText("").status, 1);
}

TEST_F(TrcStack, NothingButRegularFilesOfTheBuildIsRead) {
  Build("orders", kOrders);
  Do("mkfifo fifo; ln -s /dev/zero zero; head -c 5000 orders > cut; mkdir folder; "
     "truncate -s 100G huge; printf '\\177ELF' > four");
  std::string text;
  std::size_t lines = 0;
  for (const std::string& path :
       {std::string("/dev/zero"), std::string("/dev/tty"), std::string("/proc/self/mem"),
        std::string("/proc/kmsg"), m_dir.File("fifo"), m_dir.File("zero"), m_dir.File("cut"),
        m_dir.File("folder"), m_dir.File("huge"), m_dir.File("four"), m_dir.File("orders"),
        std::string("linux-vdso.so.1"), std::string("../../../etc/passwd"), std::string("-")}) {
    text += path + "+0x1234 [0123456789abcdef0123456789abcdef01234567]\n";
    ++lines;
  }
  const TrcRun run = StackOfText(text);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, text);
  EXPECT_EQ(LinesOf(run.err).size(), lines) << run.err;
}

TEST_F(TrcStack, ADamagedFileOfTheRightBuildCostsOnlyItsNames) {
  Trace(Build("orders", kOrders));
  const std::string whole = ReadAll(m_dir.File("orders"));
  const std::string recorded = Joined(FramesOf(Stack({"--recorded"}), "charged"));
  // All behind the build id, in steps; what is left of it must not matter to the other frames.
  for (std::size_t at = 4096; at < whole.size(); at += 1500) {
    std::string damaged = whole;
    for (std::size_t i = at; i < std::min(at + 1500, whole.size()); ++i)
      damaged[i] = static_cast<char>(damaged[i] * 31 + static_cast<char>(i));
    m_dir.File("orders", damaged);
    const TrcRun run = StackOfText(recorded);
    EXPECT_EQ(run.status, 0) << at;
    EXPECT_GE(LinesOf(run.out).size(), LinesOf(recorded).size()) << at << run.out;
  }
}

TEST_F(TrcStack, AFileWithoutStacksIsAnAnswerOfNo) {
  const std::string file = m_dir.File("old.trc");
  ASSERT_EQ(RunTrc({"gen", "--records", "5", "--old", file}).status, 0);
  ASSERT_EQ(RunTrc({"convert", file, m_dir.File("new.trc")}).status, 0);
  const TrcRun run = RunTrc({"stack", m_dir.File("new.trc")});
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_EQ(run.out, "");
}

}  // namespace
