// Programs that a test builds, traces and then names the stacks of.
//
// QUOR_LIBRARY, QUOR_INCLUDE, TEST_CXX and TEST_CXXFLAGS say how they are built.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <string>
#include <vector>

#include "run_trc.h"
#include "support/temp_dir.h"

class StackPrograms : public ::testing::Test {
 protected:
  StackPrograms() { setenv("HOME", m_dir.Path().c_str(), 1); }

  static std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
  }
  // Quoted for the shell; no path here has a quote.
  void Do(const std::string& command) const {
    EXPECT_EQ(std::system(("cd " + Quoted(m_dir.Path()) + " && " + command).c_str()), 0) << command;
  }

  // The path of the program, from a source that has the trace point and what follows.
  std::string Build(const std::string& name, const std::string& source,
                    const std::string& flags = "-O2 -g") const {
    m_dir.File(name + ".cpp", source);
    const std::string library = Variable("QUOR_LIBRARY");
    const std::string folder = library.substr(0, library.rfind('/'));
    Do(Variable("TEST_CXX") + " " + Variable("TEST_CXXFLAGS") + " -std=c++17 " + flags + " -I" +
       Quoted(Variable("QUOR_INCLUDE")) + " -o " + name + " " + name + ".cpp " + Quoted(library) +
       " -Wl,-rpath," + Quoted(folder));
    return m_dir.File(name);
  }
  // The same with the library and all others inside.
  std::string BuildStatic(const std::string& name, const std::string& source,
                          const std::string& flags) const {
    m_dir.File(name + ".cpp", source);
    Do(Variable("TEST_CXX") + " -std=c++17 " + flags + " -I" + Quoted(Variable("QUOR_INCLUDE")) +
       " -o " + name + " " + name + ".cpp " + Quoted(Variable("QUOR_STATIC")) +
       " -lpthread -ldl 2> build.log");
    return m_dir.File(name);
  }
  // Runs it into trace.trc.
  void Trace(const std::string& program) const {
    Do("rm -f trace.trc; QUOR_AUTOSTART=0 QUOR_SETTINGS='*=Info+Stack' QUOR_SINK=file:" +
       Quoted(m_dir.File("trace.trc")) + " " + Quoted(program));
  }
  TrcRun Stack(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"stack", m_dir.File("trace.trc")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunTrc(arguments);
  }
  // The lines below the trace with this text, without their indentation.
  static std::vector<std::string> FramesOf(const TrcRun& run, const std::string& text) {
    std::vector<std::string> frames;
    bool within = false;
    for (const std::string& line : LinesOf(run.out)) {
      const bool frame = line.rfind("    ", 0) == 0;
      if (!frame) within = line.substr(line.find(": ") + 2) == text;
      if (frame && within) frames.push_back(line.substr(4));
    }
    EXPECT_FALSE(frames.empty()) << run.out << run.err;
    return frames.empty() ? std::vector<std::string>{""} : frames;
  }
  // The same as one text.
  static std::string Joined(const std::vector<std::string>& frames) {
    std::string all;
    for (const std::string& frame : frames) all += frame + "\n";
    return all;
  }
  // What trc stack makes of a given text.
  TrcRun StackOfText(const std::string& text) const {
    const std::string in = m_dir.File("stack.txt", text);
    const std::string out = m_dir.File("out.txt"), err = m_dir.File("err.txt");
    const int status = std::system((Quoted(Variable("TRC")) + " stack - < " + Quoted(in) + " > " +
                                    Quoted(out) + " 2> " + Quoted(err))
                                       .c_str());
    TrcRun run;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = ReadAll(out);
    run.err = ReadAll(err);
    return run;
  }

  TempDir m_dir;
};

// In main of `Build`: traces "charged" below main, Charge and, inlined, Deepest.
inline constexpr char kOrders[] = R"(#include <quor/quor.h>
static quor_point point = QUOR_POINT_INIT("Net", "Connect");
namespace shop {
struct Order { int id; };
static inline __attribute__((always_inline)) void Deepest(const Order& order) {
  quor_trace(&point, QUOR_INFO, 0, 0, "charged", 7);
  asm volatile("" :: "r"(&order));
}
__attribute__((noinline)) void Charge(const Order& order) {
  Deepest(order);
  asm volatile("");
}
}
int main() {
  quor_application("orders");
  shop::Charge({7});
  asm volatile("");
}
)";
