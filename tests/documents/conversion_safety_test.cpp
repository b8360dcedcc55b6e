// A conversion deletes nothing that it has not read, and nothing before the new file is safe.
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <chrono>

#include "base/file_mark.h"
#include "conversion_fixture.h"
#include "documents/conversion_under_way.h"
#include "documents/trace_file_conversion.h"
#include "file_calls.h"

namespace {

namespace fs = std::filesystem;

int Answered(const std::string& call, long (*make)(const void*), const void* what) {
  if (const int error = FileCalls::Ask(call)) {
    errno = error;
    return -1;
  }
  return static_cast<int>(make(what));
}

std::string NameIn(const char* path) {
  return fs::path(path).filename().string();
}

}  // namespace

extern "C" int unlink(const char* path) noexcept {
  return Answered(
      "unlink " + NameIn(path),
      [](const void* what) {
        return syscall(SYS_unlinkat, AT_FDCWD, static_cast<const char*>(what), 0);
      },
      path);
}

extern "C" int renameat2(int, const char* from, int, const char* to, unsigned flags) noexcept {
  if (const int error = FileCalls::Ask("rename " + NameIn(from) + " " + NameIn(to))) {
    errno = error;
    return -1;
  }
  return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, flags));
}

extern "C" int fchmodat(int, const char* path, mode_t mode, int) noexcept {
  if (const int error = FileCalls::Ask("chmod " + NameIn(path))) {
    errno = error;
    return -1;
  }
  return static_cast<int>(syscall(SYS_fchmodat, AT_FDCWD, path, mode));
}

extern "C" int fdatasync(int descriptor) {
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const std::string path = fs::read_symlink(link).filename().string();
  struct stat status = {};
  fstat(descriptor, &status);
  return Answered(
      "sync " + path + " " + std::to_string(status.st_size),
      [](const void* what) { return syscall(SYS_fdatasync, *static_cast<const int*>(what)); },
      &descriptor);
}

namespace {

class ConversionSafetyTest : public ConversionTest {
 protected:
  static constexpr char kRenaming[] = "stop: Error renaming old trace file\n";

  // Maps the file, lets `meanwhile` happen, and converts on this thread.
  bool Converts(const std::string& path, const std::function<void()>& meanwhile = {}) {
    m_words.clear();
    const auto old = MappedFile::Open(path);
    if (meanwhile) meanwhile();
    ConversionCallbacks callbacks;
    callbacks.progress = [this](std::uint64_t, bool last) {
      if (last && m_atEnd) m_atEnd();
      return last ? m_last : m_goes;
    };
    callbacks.showMessage = [this](const char* words, BoxIcon icon) {
      m_words += std::string(icon == BoxIcon::Stop ? "stop: " : "warning: ") + words + "\n";
    };
    return ConvertTraceFile(*old, path, callbacks, &m_result) != nullptr;
  }
  // Does `act` before the call, which then is made.
  static FileCalls::Callback Before(const std::string& call, std::function<void()> act) {
    return [call, act = std::move(act)](const std::string& made) {
      if (made == call) act();
      return 0;
    };
  }
  static void Append(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::app) << text;
  }

  std::function<void()> m_atEnd;
  ConversionControl m_goes = ConversionControl::Continue, m_last = ConversionControl::Continue;
  std::string m_words;
  OldConversion m_result;
};

TEST_F(ConversionSafetyTest, TheNewFileIsWholeOnTheDiskBeforeTheOldOneLosesItsName) {
  const std::string path = OldFile(3000);
  std::vector<std::string> calls;
  const FileCalls interceptor([&](const std::string& call) {
    calls.push_back(call);
    return 0;
  });
  ASSERT_TRUE(Converts(path));
  const std::string size = std::to_string(fs::file_size(path));
  EXPECT_EQ(calls, (std::vector<std::string>{"chmod web.trc.tmp", "sync web.trc.tmp " + size,
                                             "unlink web.trc.old", "rename web.trc web.trc.old",
                                             "rename web.trc.tmp web.trc", "unlink web.trc.old"}));
}

TEST_F(ConversionSafetyTest, ASaveOverAnExistingFileIsOnTheDiskBeforeItTakesItsPlace) {
  CTraceFileDoc& document = Load(TrcImage().Trace("up"));
  const std::string copy = m_temp.File("copy.trc");
  std::vector<std::string> calls;
  int error = 0;
  const FileCalls interceptor([&](const std::string& call) {
    calls.push_back(call.substr(0, 5) + call.substr(call.rfind(' ')));
    return call.starts_with("sync") ? error : 0;
  });
  EXPECT_TRUE(document.OnSaveDocument(copy));
  EXPECT_EQ(calls, std::vector<std::string>{}) << "there is nothing to lose yet";
  EXPECT_TRUE(document.OnSaveDocument(copy));
  EXPECT_EQ(calls, std::vector<std::string>{"sync  " + std::to_string(fs::file_size(copy))});
  const std::string before = ReadAll(copy);
  error = EIO;
  document.m_traces.Clear();
  EXPECT_FALSE(document.OnSaveDocument(copy));
  EXPECT_EQ(ReadAll(copy), before);
}

TEST_F(ConversionSafetyTest, ADiskThatRefusesTheNewFileKeepsTheOldOne) {
  const std::string path = OldFile(3);
  const FileCalls interceptor(
      [](const std::string& call) { return call.starts_with("sync") ? EIO : 0; });
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, "stop: Error writing to temporary file\n");
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, NobodyReadsTheNewFileWhoCouldNotReadTheOldOne) {
  const std::string path = OldFile(3);
  const FileCalls interceptor(
      [](const std::string& call) { return call == "chmod web.trc.tmp" ? EOPNOTSUPP : 0; });
  fs::permissions(path, fs::perms(0600));
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, "stop: Error creating temporary file\n");
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
  fs::permissions(path, fs::perms(0666));
  EXPECT_TRUE(Converts(path)) << "where a mode cannot be set, a file that is not more open will do";
}

TEST_F(ConversionSafetyTest, WhatWasWrittenIntoTheFileWhileTheQuestionStoodIsKept) {
  const std::string path = OldFile(3);
  const std::string before = ReadAll(path);
  EXPECT_FALSE(Converts(path, [&] { Append(path, "later"); }));
  EXPECT_EQ(m_words, kRenaming);
  EXPECT_EQ(ReadAll(path), before + "later");
  EXPECT_EQ(Folder(), "web.trc(old) ") << "nothing was begun";
}

TEST_F(ConversionSafetyTest, WhatIsWrittenDuringTheConversionIsKept) {
  const std::string path = OldFile(3);
  const std::string before = ReadAll(path);
  m_atEnd = [&] { Append(path, "later"); };
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, kRenaming);
  EXPECT_EQ(ReadAll(path), before + "later");
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, AnotherFileUnderTheNameIsKept) {
  const std::string path = OldFile(3), other = m_temp.File("other", "Version 2.2 of somebody");
  m_atEnd = [&] { fs::rename(other, path); };
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, kRenaming);
  EXPECT_EQ(ReadAll(path), "Version 2.2 of somebody");
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, BytesThatWereOverwrittenUnderTheSameSizeAndTimeAreKept) {
  const std::string path = OldFile(3);
  m_atEnd = [&] {
    const auto time = fs::last_write_time(path);
    std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).seekp(60) << "X";
    fs::last_write_time(path, time);
  };
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, kRenaming);
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, AFileThatTakesTheNameInTheLastMomentGetsItBack) {
  const std::string path = OldFile(3), other = m_temp.File("other", "Version 2.2 of somebody");
  bool done = false;
  const FileCalls interceptor(Before("rename web.trc web.trc.old", [&] {
    if (!std::exchange(done, true)) fs::rename(other, path);
  }));
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, kRenaming);
  EXPECT_EQ(ReadAll(path), "Version 2.2 of somebody");
  EXPECT_EQ(Folder(), "web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, WhatIsWrittenBetweenTheRenamesStaysInTheOldFile) {
  const std::string path = OldFile(3);
  const FileCalls interceptor(
      Before("rename web.trc.tmp web.trc", [&] { Append(path + ".old", "later"); }));
  EXPECT_TRUE(Converts(path));
  EXPECT_EQ(m_words, "warning: Error removing old trace file\n");
  EXPECT_EQ(Folder(), "web.trc web.trc.old(old) ");
  EXPECT_TRUE(ReadAll(path + ".old").ends_with("later"));
}

TEST_F(ConversionSafetyTest, AnotherFileUnderTheTemporaryNameDoesNotTakeThePlaceOfTheOldOne) {
  const std::string path = OldFile(3);
  m_atEnd = [&] {
    fs::remove(path + ".tmp");
    Append(path + ".tmp", "not ours");
  };
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, "stop: Error renaming temporary file\n");
  EXPECT_EQ(Folder(), "web.trc.old(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, AnotherFileThatIsRenamedInItsPlaceDoesNotCostTheOldOne) {
  const std::string path = OldFile(3), other = m_temp.File("other", "not ours");
  const std::string before = ReadAll(path);
  const FileCalls interceptor(
      Before("rename web.trc.tmp web.trc", [&] { fs::rename(other, path + ".tmp"); }));
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(m_words, "stop: Error renaming temporary file\n");
  EXPECT_EQ(ReadAll(path + ".old"), before);
  EXPECT_EQ(ReadAll(path), "not ours");
}

TEST_F(ConversionSafetyTest, AStaleSecondNameOfTheSameFileIsNoChange) {
  const std::string path = OldFile(3);
  fs::create_hard_link(path, path + ".old");
  EXPECT_TRUE(Converts(path));
  EXPECT_EQ(m_words, "");
  EXPECT_EQ(Folder(), "web.trc ");
}

TEST_F(ConversionSafetyTest, ASymbolicLinkConvertsAndTheFileBehindItStays) {
  const std::string path = OldFile(3), link = m_temp.File("link.trc");
  fs::create_symlink("web.trc", link);
  EXPECT_TRUE(Converts(link));
  EXPECT_EQ(m_words, "");
  EXPECT_EQ(Folder(), "link.trc web.trc(old) ");
}

TEST_F(ConversionSafetyTest, ALinkUnderTheTemporaryNameIsNotFollowed) {
  const std::string path = OldFile(3), notes = m_temp.File("notes", "mine");
  fs::create_symlink("notes", path + ".tmp");
  EXPECT_FALSE(Converts(path));
  EXPECT_NE(m_words.find("Error creating temporary file"), std::string::npos) << m_words;
  EXPECT_EQ(ReadAll(notes), "mine");
  EXPECT_TRUE(fs::is_symlink(path + ".tmp"));
  EXPECT_EQ(Folder(), "notes web.trc(old) web.trc.tmp ");
}

TEST_F(ConversionSafetyTest, AConversionThatIsGivenUpLeavesTheOldFileAndNothingBesideIt) {
  const std::string path = OldFile(3000);
  const std::string before = ReadAll(path);
  m_goes = ConversionControl::Abandon;
  EXPECT_FALSE(Converts(path));
  m_goes = ConversionControl::Continue;
  m_last = ConversionControl::Abandon;
  EXPECT_FALSE(Converts(path)) << "up to the last moment before the swap";
  EXPECT_EQ(m_words, "");
  EXPECT_EQ(ReadAll(path), before);
  EXPECT_EQ(Folder(), "web.trc(old) ");
}

TEST_F(ConversionSafetyTest, AFileThatTookTheTemporaryNameIsNotOursToRemove) {
  const std::string path = OldFile(3);
  m_last = ConversionControl::Abandon;
  m_atEnd = [&] {
    fs::remove(path + ".tmp");
    Append(path + ".tmp", "not ours");
  };
  EXPECT_FALSE(Converts(path));
  EXPECT_EQ(ReadAll(path + ".tmp"), "not ours");
}

// Each in a process of its own, as the end of a process is noted for good.
class EndedFromOutside : public ConversionTest {
 protected:
  template <class Test>
  static void InOwnProcess(Test test) {
    const auto run = [&test] {
      test();
      _exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
  }
};

TEST_F(EndedFromOutside, ADocumentThatTheEndOfTheProgramClosesKeepsItsOldFile) {
  const std::string path = OldFile(5000);
  const std::string before = ReadAll(path);
  InOwnProcess([&] {
    HANDLE cancel;
    m_loads.beforeWalk = [&cancel] {
      ConversionUnderWay::GiveUpAll();
      cancel->Set();
    };
    CTraceFileDoc document(m_host, m_loads);
    cancel = document.CancelEvent();
    m_host.AnswerBox(BoxAnswer::Yes);
    ASSERT_TRUE(document.OnOpenDocument(path));
    document.DeleteContents();
    m_host.RunPosted();
    EXPECT_EQ(ReportedLines("posted box"), "");
  });
  EXPECT_EQ(ReadAll(path), before);
  EXPECT_EQ(Folder(), "web.trc(old) ");
}

TEST_F(EndedFromOutside, AQuestionThatTheEndOfTheProgramClosesIsNoYes) {
  const std::string path = OldFile(3);
  InOwnProcess([&] {
    ConversionUnderWay::GiveUpAll();
    m_host.AnswerBox(BoxAnswer::Cancel);
    CTraceFileDoc document(m_host, m_loads);
    EXPECT_FALSE(document.OnOpenDocument(path));
  });
  EXPECT_EQ(Folder(), "web.trc(old) ");
}

// A process that ends while the conversion is under way.
TEST_F(EndedFromOutside, AProgramThatEndsByExitCleansUpFirst) {
  const std::string path = OldFile(100'000);
  const std::string before = ReadAll(path);
  const FileCalls interceptor([](const std::string& call) {
    if (call.starts_with("sync")) usleep(200'000);  // a slow disk
    return 0;
  });
  EXPECT_EXIT(
      {
        static CTraceFileDoc* const document =
            new CTraceFileDoc(m_host, m_loads);  // left to itself
        m_host.AnswerBox(BoxAnswer::Yes);
        document->OnOpenDocument(path);
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!fs::exists(path + ".tmp") && std::chrono::steady_clock::now() < until) {
        }
        exit(7);
      },
      testing::ExitedWithCode(7), "");
  EXPECT_EQ(ReadAll(path), before);
  EXPECT_EQ(Folder(), "web.trc(old) ");
}

}  // namespace
