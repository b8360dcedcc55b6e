// A trace file that a test writes while the program follows it.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

class TrcFollow : public testing::Test {
 protected:
  // Long ago, so that --until may lie behind all traces and before now.
  static constexpr unsigned kYear = 2001;

  static TraceFields At(unsigned second, const std::string& text) {
    TraceFields trace;
    trace.text = text;
    trace.date = PackDate(kYear, 1, 1);
    trace.time = PackTime(9, second / 60, second % 60, 0);
    return trace;
  }
  // Texts "a0", "a1", ... with their component.
  static TrcImage Image(const std::string& name, unsigned traces) {
    TrcImage image;
    image.Name(7, name);
    for (unsigned i = 0; i < traces; ++i) {
      TraceFields trace = At(i, name + std::to_string(i));
      trace.component = 7;
      trace.attributes = static_cast<std::uint16_t>(1u << i % 3);
      image.Trace(trace);
    }
    return image;
  }
  // Of images that begin alike.
  static std::string Behind(const TrcImage& longer, const TrcImage& shorter) {
    return longer.Bytes().substr(shorter.Size());
  }
  std::string File() const { return m_directory.File("web.trc"); }
  void Append(std::string_view bytes) const { AppendTo(File(), bytes); }
  static void AppendTo(const std::string& path, std::string_view bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_APPEND);
    ASSERT_GE(file, 0);
    EXPECT_EQ(write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(file);
  }
  static std::vector<std::string> Follow(const std::string& path,
                                         const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"dump", "--follow", path, "--format", "jsonl"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  // Waits for so many lines of the program.
  static std::size_t Lines(TrcProcess& trc, std::size_t wanted) {
    std::size_t bytes = 0, lines = 0;
    while (!trc.Late()) {
      const std::string& out = trc.ReadOut(bytes);
      lines = static_cast<std::size_t>(std::count(out.begin(), out.end(), '\n'));
      if (lines >= wanted || out.size() < bytes) break;
      bytes = out.size() + 1;
    }
    return lines;
  }
  // By the program, so far.
  static std::uint64_t BytesRead(const TrcProcess& trc) {
    const std::string counts = ReadAll("/proc/" + std::to_string(trc.Id()) + "/io");
    const std::string_view name = "rchar: ";
    const std::size_t at = counts.find(name);
    return at == counts.npos ? 0 : std::stoull(counts.substr(at + name.size()));
  }
  static TrcRun End(TrcProcess& trc) {
    trc.Interrupt();
    return trc.Finish();
  }
  // The last line; all of them would take much memory.
  static nlohmann::json LastOf(const std::string& out) {
    return nlohmann::json::parse(out.substr(out.rfind('\n', out.size() - 2) + 1));
  }
  // Long enough that the program has looked, were there something to see.
  static void Rest(int milliseconds = 100) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  // Stops the program, so that it finds together what happens meanwhile.
  template <class Deed>
  static void WhileStopped(const TrcProcess& trc, Deed deed) {
    trc.Signal(SIGSTOP);
    int status = 0;
    EXPECT_EQ(waitpid(trc.Id(), &status, WUNTRACED), trc.Id());
    deed();
    trc.Signal(SIGCONT);
  }

  TempDir m_directory;
};
