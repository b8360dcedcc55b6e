// Commands whose file another program cuts, rewrites or lengthens while they read it.
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>

#include <sstream>

#include "run_trc.h"
#include "support/temp_dir.h"

namespace {

constexpr int kRefused = 2, kNotWhole = 3;
constexpr int kTries = 100;
constexpr char kOldTarget[] = "what stood there";

class TrcChangedFile : public testing::Test {
 protected:
  using Act = void (*)(const std::string& path);

  TrcChangedFile() {
    sched_getaffinity(0, sizeof m_processors, &m_processors);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
    EXPECT_EQ(RunTrc({"gen", "-n", "200000", m_whole}).status, 0);
    EXPECT_EQ(RunTrc({"gen", "--old", "-n", "200000", m_old}).status, 0);
  }
  ~TrcChangedFile() override { sched_setaffinity(0, sizeof m_processors, &m_processors); }
  // Of the file's mapping, more is read than a look at the header reads, for which the kernel may
  // bring megabytes, and an end is not: what is read there still meets what is done to the file
  // now.
  bool ReadsTraces(pid_t process) const {
    const auto whole = static_cast<long>(std::filesystem::file_size(m_path) / 1024);
    std::istringstream maps(ReadAll("/proc/" + std::to_string(process) + "/smaps"));
    bool ours = false;
    for (std::string line; std::getline(maps, line);) {
      if (line.find('/') != std::string::npos) ours = line.find(m_path) != std::string::npos;
      if (!ours || line.rfind("Rss:", 0) != 0) continue;
      const long read = std::stol(line.substr(4));
      if (read > whole / 4 && read < whole - 1024) return true;
    }
    return false;
  }
  static bool HasEnded(pid_t process) {
    siginfo_t ended = {};
    return waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
           ended.si_pid != 0;
  }
  // Halts the program amid its work. False when it came to its end before. It runs only while this
  // one sleeps: on a busy machine it would have read all before it is looked at.
  bool HaltAmid(const TrcProcess& trc) const {
    const pid_t process = trc.Id();
    const sched_param none = {};
    sched_setscheduler(process, SCHED_IDLE, &none);
    while (!ReadsTraces(process)) {
      if (HasEnded(process) || trc.Late()) return false;
      usleep(100);
    }
    trc.Signal(SIGSTOP);
    siginfo_t stopped = {};
    waitid(P_PID, static_cast<id_t>(process), &stopped, WSTOPPED | WEXITED | WNOWAIT);
    if (stopped.si_code == CLD_STOPPED && ReadsTraces(process) &&
        (!std::filesystem::exists(m_out) || ReadAll(m_out) == kOldTarget))
      return true;
    trc.Signal(SIGCONT);
    return false;
  }
  // Runs the command on a copy of `from`; `act` is done to the copy amid the work.
  TrcRun RunWhile(const std::vector<std::string>& arguments, const std::string& from, Act act) {
    for (int i = 0; i < kTries; ++i) {
      std::filesystem::copy_file(from, m_path, std::filesystem::copy_options::overwrite_existing);
      const timespec longAgo[2] = {{1000, 0}, {1000, 0}};
      EXPECT_EQ(utimensat(AT_FDCWD, m_path.c_str(), longAgo, 0), 0);
      TrcProcess trc(TrcStart{.arguments = arguments});
      if (!HaltAmid(trc)) continue;
      act(m_path);
      trc.Signal(SIGCONT);
      return trc.Finish();
    }
    ADD_FAILURE() << arguments[0] << " always ended too soon";
    return {};
  }
  static void Cut(const std::string& path) { EXPECT_EQ(truncate(path.c_str(), 20000), 0); }
  static void Overwrite(const std::string& path) {
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(1000) << "words of another program";
  }
  static void Append(const std::string& path) {
    std::ofstream(path, std::ios::binary | std::ios::app) << "half a record";
  }
  std::string Shorter(const std::string& from) const {
    std::string missing = std::to_string(std::filesystem::file_size(from) - 20000);
    for (int at = static_cast<int>(missing.size()) - 3; at > 0; at -= 3)
      missing.insert(static_cast<std::size_t>(at), ",");
    return "trc: " + m_path + ": changed while it was read: the file has become shorter, " +
           missing + " bytes are missing";
  }
  std::vector<std::vector<std::string>> Tellers() const {
    return {{"info", m_path},
            {"info", "--json", m_path},
            {"dump", m_path},
            {"find", "order", m_path},
            {"tree", m_path},
            {"dump", m_path, "-f", "jsonl"},
            {"find", "no such", m_path},
            {"export", m_path, "-"}};
  }

  cpu_set_t m_processors;
  TempDir m_temp;
  const std::string m_whole = m_temp.File("whole.trc"), m_old = m_temp.File("old.trc");
  const std::string m_path = m_temp.File("read.trc"), m_out = m_temp.File("out");
};

TEST_F(TrcChangedFile, ACutIsReportedOnceAndTheAnswerIsNotTheWholeOne) {
  for (const auto& arguments : Tellers()) {
    const TrcRun run = RunWhile(arguments, m_whole, Cut);
    EXPECT_EQ(run.status, kNotWhole) << arguments[0];
    EXPECT_EQ(run.err, Shorter(m_whole) + "\n") << arguments[0];
  }
}

TEST_F(TrcChangedFile, WhatWouldBeWrittenFromACutFileIsNotAndTheOldTargetStays) {
  for (const bool there : {true, false}) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"save"}, {"export"}, {"tree", "--export"}, {"convert"}}) {
      if (there) m_temp.File("out", kOldTarget);
      std::vector<std::string> arguments = words;
      arguments.insert(arguments.end(), {m_path, m_out});
      const std::string& from = words[0] == "convert" ? m_old : m_whole;
      const TrcRun run = RunWhile(arguments, from, Cut);
      EXPECT_EQ(run.status, kRefused) << words[0];
      EXPECT_EQ(run.err, Shorter(from) + "; " + m_out + " is not written\n") << words[0];
      ASSERT_EQ(std::filesystem::exists(m_out), there) << words[0];
      EXPECT_EQ(ReadIfThere(m_out), there ? kOldTarget : "") << words[0];
      std::filesystem::remove(m_out);
    }
  }
}

TEST_F(TrcChangedFile, AWriteInItsMiddleIsReportedToo) {
  const TrcRun reported = RunWhile({"dump", m_path}, m_whole, Overwrite);
  EXPECT_EQ(reported.status, kNotWhole);
  const std::string words =
      "trc: " + m_path + ": changed while it was read: another program has written to the file";
  EXPECT_EQ(reported.err, words + "\n");
  const TrcRun written = RunWhile({"save", m_path, m_out}, m_whole, Overwrite);
  EXPECT_EQ(written.status, kRefused);
  EXPECT_EQ(written.err, words + "; " + m_out + " is not written\n");
}

TEST_F(TrcChangedFile, AFileThatGrowsIsReadAsFarAsItWent) {
  const TrcRun reported = RunWhile({"export", m_path, "-"}, m_whole, Append);
  EXPECT_EQ(reported.status, 0);
  EXPECT_EQ(reported.err, "");
  EXPECT_EQ(RunWhile({"save", m_path, m_out}, m_whole, Append).status, 0);
  EXPECT_EQ(ReadAll(m_out), ReadAll(m_whole));
}

}  // namespace
