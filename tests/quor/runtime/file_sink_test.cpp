// The file sink, written by a traced process and read back from its files.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "file_traces.h"
#include "quor/quor.hpp"
#include "quor/runtime/sink/sink_files.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"

namespace {

QUOR_POINT(work_point, "Work", "Step");

TEST(FileSink, TracesAreWrittenNumberedAndWithTheirNames) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (int i = 0; i < 1000; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = AcceptWithFile(service, path, "flush=0;maxfiles=0;maxsize=0;");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  const FileTraces file = ReadTrc(path);
  EXPECT_TRUE(file.whole);
  ASSERT_EQ(file.texts.size(), 1000u);
  for (std::size_t i = 0; i < 1000; ++i) {
    EXPECT_EQ(file.texts[i], std::to_string(i));
    EXPECT_EQ(file.numbers[i], i + 1);
  }
}

TEST(FileSink, WhatIsBufferedReachesTheFileByItselfSoon) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    QUOR_TRACE_INFO(work_point, "one");
    self.AwaitGo();
    return 0;
  });
  const auto seen = AcceptWithFile(service, path, "");
  app.Go();
  EXPECT_TRUE(WaitFor([&] { return ReadTrc(path).texts.size() == 1; }));
}

TEST(FileSink, WithFlushEachTraceIsInTheFileWhenItsCallReturns) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (std::uint64_t i = 0;; ++i) {
      QUOR_TRACE_INFO(work_point, "{}", i);
      self.Report(i);
    }
    return 0;
  });
  const auto seen = AcceptWithFile(service, path, "flush=1;");
  app.Go();
  std::uint64_t returned = 0;
  for (int i = 0; i < 200; ++i) returned = app.Reported();
  app.Kill();
  const FileTraces file = ReadTrc(path);
  ASSERT_GT(file.texts.size(), returned);
  for (std::size_t i = 0; i <= returned; ++i) ASSERT_EQ(file.texts[i], std::to_string(i));
}

TEST(FileSink, WhatWasStillBufferedWhenTheApplicationIsKilledIsLeftToTheService) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (std::uint64_t i = 0;; ++i) {
      QUOR_TRACE_INFO(work_point, "{}", i);
      self.Report(i);
    }
    return 0;
  });
  const auto seen = AcceptWithFile(service, path, "flush=0;");
  app.Go();
  std::uint64_t returned = 0;
  for (int i = 0; i < 2000; ++i) returned = app.Reported();
  app.Kill();
  seen->m_consumer.Resume();
  seen->Finish();
  std::set<std::string> kept;
  for (const std::string& text : ReadTrc(path).texts) kept.insert(text);
  for (const SeenTrace& trace : seen->m_traces) kept.insert(trace.text);
  for (std::uint64_t i = 0; i <= returned; ++i) ASSERT_EQ(kept.count(std::to_string(i)), 1u) << i;
}

TEST(FileSink, FullFilesAreRenamedWithNumbersAndEachCanBeOpenedByItself) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    const std::string filling(1000, 'x');
    for (int i = 0; i < 5000; ++i) {
      QUOR_TRACE_INFO(work_point, "{} {}", i, filling);
      if (i % 1000 == 0) quor_flush(10000);
    }
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = AcceptWithFile(service, path, "flush=0;maxfiles=2;maxsize=1;");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  // 5 MB in files of 1 MB: the current one and the two newest of the full ones are kept.
  EXPECT_FALSE(std::filesystem::exists(service.Folder() + "/a.3.trc"));
  int next = -1;
  for (const char* name : {"/a.2.trc", "/a.1.trc", "/a.trc"}) {
    const FileTraces file = ReadTrc(service.Folder() + name);
    EXPECT_TRUE(file.whole) << name;
    ASSERT_FALSE(file.texts.empty()) << name;
    EXPECT_LE(std::filesystem::file_size(service.Folder() + name), 1u << 20) << name;
    for (const std::string& text : file.texts) {
      const int number = std::stoi(text);
      EXPECT_TRUE(next == -1 || number == next) << name;
      next = number + 1;
    }
  }
  EXPECT_EQ(next, 5000);
}

TEST(FileSink, TheFileOfAnEarlierRunIsKept) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  std::ofstream(path) << "earlier";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    QUOR_TRACE_INFO(work_point, "new");
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = AcceptWithFile(service, path, "flush=0;maxfiles=10;maxsize=5;");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  std::string earlier;
  std::ifstream(service.Folder() + "/a.1.trc") >> earlier;
  EXPECT_EQ(earlier, "earlier");
  EXPECT_EQ(ReadTrc(path).texts, std::vector<std::string>{"new"});
}

TEST(FileSink, AFileThatAnotherProcessIsWritingIsLeftAlone) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  const int other = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    QUOR_TRACE_INFO(work_point, "mine");
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const pid_t pid = app.Pid();
  const auto seen = AcceptWithFile(service, path, "");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_EQ(std::filesystem::file_size(path), 0u);
  const std::string own = service.Folder() + "/a.pid" + std::to_string(pid) + ".trc";
  EXPECT_EQ(ReadTrc(own).texts, std::vector<std::string>{"mine"});
  close(other);
}

TEST(FileSink, AFileThatCannotBeOpenedIsReportedAndItsTracesAreCounted) {
  FakeService service;
  const std::string path = service.Folder() + "/no/such/folder.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (int i = 0; i < 10; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    quor_flush(10000);
    quor_counts counts{};
    quor_get_counts(&counts);
    self.AwaitGo();
    return counts.traced == 10 && counts.lost == 10 ? 0 : 1;
  });
  const auto seen = AcceptWithFile(service, path, "");
  app.Go();
  std::uint64_t lost = 0;
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    lost = 0;
    for (const LinkReport& report : seen->m_reports) lost += report.lost;
    return lost == 10;
  }));
  ASSERT_FALSE(seen->m_reports.empty());
  EXPECT_EQ(seen->m_reports[0].text, path + ": No such file or directory");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(FileSink, AFullDiskLeavesWholeRecordsCountsTheRestAndTheFileGoesOnLater) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlim_t all = limit.rlim_cur;
    limit.rlim_cur = 100'000;
    setrlimit(RLIMIT_FSIZE, &limit);
    self.AwaitGo();
    for (int i = 0; i < 5000; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    quor_flush(10000);
    quor_counts counts{};
    quor_get_counts(&counts);
    self.Report(counts.lost);
    // The disk is still full at the next try: the report of the loss does not reach the file
    // either.
    for (const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(1200);
         std::chrono::steady_clock::now() < until; poll(nullptr, 0, 20)) {
      for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(work_point, "still full");
      quor_flush(10000);
    }
    quor_get_counts(&counts);
    limit.rlim_cur = all;
    setrlimit(RLIMIT_FSIZE, &limit);
    // The file is tried again after a second: until then traces are lost, and counted.
    std::uint64_t before = 0;
    do {
      before = counts.lost;
      poll(nullptr, 0, 20);
      QUOR_TRACE_INFO(work_point, "again");
      quor_flush(10000);
      quor_get_counts(&counts);
    } while (counts.lost != before);
    self.Report(counts.traced);
    self.Report(counts.lost);
    return 0;
  });
  const auto seen = AcceptWithFile(service, path, "");
  app.Go();
  const std::uint64_t lostWhileFull = app.Reported();
  EXPECT_GT(lostWhileFull, 0u);
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  EXPECT_EQ(app.Wait(), 0);
  const FileTraces file = ReadTrc(path);
  EXPECT_TRUE(file.whole);
  std::size_t kept = 0, reported = 0;
  for (const std::string& text : file.texts) {
    unsigned long long number = 0;
    if (std::sscanf(text.c_str(), "Quor/Loss: %llu traces lost: the file could not be written",
                    &number) == 1)
      reported += number;
    else
      ++kept;
  }
  EXPECT_EQ(kept + lost, traced);
  EXPECT_EQ(reported, lost);
  EXPECT_EQ(file.texts.back(), "again");
}

TEST(FileSink, TheRingIsHandedOverWithoutLossWhenTheSinkChanges) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    std::atomic<bool> on{true};
    std::thread worker([&] {
      for (int i = 0; on.load(); ++i) {
        QUOR_TRACE_INFO(work_point, "{}", i);
        if (i % 50 == 0) poll(nullptr, 0, 1);
      }
    });
    self.AwaitGo();
    on.store(false);
    worker.join();
    quor_counts counts{};
    quor_get_counts(&counts);
    self.Report(counts.traced);
    self.Report(counts.lost);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  for (int round = 0; round < 6; ++round) {
    const std::string file = service.Folder() + "/r" + std::to_string(round) + ".trc";
    seen->SendSink(round % 2 ? SinkKind::Socket : SinkKind::File, round % 2 ? "localhost" : file,
                   "");
    ASSERT_TRUE(WaitFor([&] {
      seen->Pump();
      return seen->m_answered;
    }));
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(30);
    while (std::chrono::steady_clock::now() < until) seen->Pump();
  }
  app.Go();
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_ended;
  }));
  seen->Finish();
  EXPECT_EQ(app.Wait(), 0);
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  std::size_t inFiles = 0;
  for (int round = 0; round < 6; round += 2)
    inFiles += ReadTrc(service.Folder() + "/r" + std::to_string(round) + ".trc").texts.size();
  EXPECT_GT(inFiles, 0u);
  EXPECT_GT(seen->m_traces.size(), 0u);
  EXPECT_EQ(lost, 0u);
  EXPECT_EQ(inFiles + seen->m_traces.size(), traced);
}

TEST(FileSink, WithFlushAFullDiskNeitherEndsTheApplicationNorChangesItsErrno) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    const rlimit limit{20'000, 20'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    self.AwaitGo();
    errno = 77;
    for (int i = 0; i < 1000; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    if (errno != 77) return 1;
    quor_counts counts{};
    quor_get_counts(&counts);
    self.Report(counts.lost);
    return 0;
  });
  const auto seen = AcceptWithFile(service, path, "flush=1;");
  app.Go();
  const std::uint64_t lost = app.Reported();
  EXPECT_GT(lost, 0u);
  EXPECT_EQ(app.Wait(), 0);
  const FileTraces file = ReadTrc(path);
  EXPECT_TRUE(file.whole);
  EXPECT_EQ(file.texts.size() + lost, 1000u);
}

TEST(FileSink, WhatAFileLostIsReportedBeforeAnotherSinkTakesOver) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (int i = 0; i < 10; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    self.Report(static_cast<std::uint64_t>(quor_flush(10000)));
    self.AwaitGo();
    return 0;
  });
  const auto seen = AcceptWithFile(service, service.Folder() + "/no/such/folder.trc", "");
  app.Go();
  app.Reported();
  seen->SendSink(SinkKind::Socket, "localhost", "");
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_answered && seen->Reported() == 10;
  }));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(FileSink, WhatAFileLostIsReportedBeforeTheProcessEnds) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (int i = 0; i < 10; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    exit(0);
    return 1;
  });
  const auto seen = AcceptWithFile(service, service.Folder() + "/no/such/folder.trc", "");
  app.Go();
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_ended;
  }));
  EXPECT_EQ(seen->Reported(), 10u);
  EXPECT_EQ(app.Wait(), 0);
}

TEST(FileSink, AReportThatFoundNoServiceGoesToTheNextOne) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    for (int i = 0; i < 10; ++i) QUOR_TRACE_INFO(work_point, "{}", i);
    self.Report(static_cast<std::uint64_t>(quor_flush(10000)));
    self.AwaitGo();
    return 0;
  });
  auto seen = AcceptWithFile(service, service.Folder() + "/no/such/folder.trc", "");
  service.Stop();
  seen.reset();
  app.Go();
  app.Reported();
  service.Listen();
  const auto next = service.Accept();
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->m_hello.taker, RingTaker::Application);  // the file sink stayed
  EXPECT_TRUE(WaitFor([&] {
    next->Pump();
    return next->Reported() == 10;
  }));
}

TEST(FileSink, AnotherSinkTakesOverAlthoughTheApplicationNeverPauses) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    std::atomic<bool> on{true};
    std::vector<std::thread> workers;
    for (int t = 0; t < 3; ++t)
      workers.emplace_back([&] {
        while (on.load()) QUOR_TRACE_INFO(work_point, "flood");
      });
    self.AwaitGo();
    on.store(false);
    for (std::thread& worker : workers) worker.join();
    return 0;
  });
  const auto seen = AcceptWithFile(service, path, "maxfiles=1;maxsize=1;");
  ASSERT_NE(seen, nullptr);
  seen->SendSink(SinkKind::Socket, "localhost", "");
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_answered;
  }));
  EXPECT_EQ(seen->m_taker, RingTaker::Service);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(FileSink, ARelativePathStaysWhereItWasWhenTheApplicationChangesItsFolder) {
  FakeService service;
  const std::string folder = service.Folder();
  TracedChild app([&](TracedChild& self) {
    if (chdir(folder.c_str()) != 0) return 1;
    quor_application("orders");
    self.AwaitGo();
    if (chdir("/") != 0) return 1;
    const std::string filling(1000, 'x');
    for (int i = 0; i < 1500; ++i) QUOR_TRACE_INFO(work_point, "{} {}", i, filling);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = AcceptWithFile(service, "a.trc", "maxsize=1;");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_FALSE(ReadTrc(folder + "/a.1.trc").texts.empty());
  EXPECT_FALSE(ReadTrc(folder + "/a.trc").texts.empty());
}

// The first byte of each of a.1.trc, a.2.trc ... up to 9; '-' where there is none.
std::string Numbered(const std::string& folder) {
  std::string all;
  for (int number = 1; number <= 9; ++number) {
    std::ifstream file(folder + "/a." + std::to_string(number) + ".trc");
    const int first = file.get();
    all += first == EOF ? '-' : static_cast<char>(first);
  }
  return all;
}

TEST(SinkFiles, NumberedFilesMoveUpToTheFirstGapAndThoseBeyondALoweredLimitGo) {
  const TempDir folder;
  for (const char* name : {"a.trc", "a.1.trc", "a.2.trc", "a.4.trc"})
    std::ofstream(folder.File(name)) << (name[2] == 't' ? '0' : name[2]);
  SinkOptions options;
  SinkFiles unlimited(folder.File("a.trc"), options);
  ASSERT_TRUE(unlimited.Begin());
  EXPECT_EQ(Numbered(folder.Path()), "0124-----");
  std::size_t written = 0;
  ASSERT_TRUE(unlimited.Write(reinterpret_cast<const std::uint8_t*>("n"), 1, &written));
  unlimited.End();
  options.maxFiles = 2;
  SinkFiles two(folder.File("a.trc"), options);
  ASSERT_TRUE(two.Begin());
  EXPECT_EQ(Numbered(folder.Path()), "n0-------");
}

TEST(SinkOptions, AreReadInAnyOrderAndWhatIsUnknownIsPassedOver) {
  const SinkOptions all = SinkOptions::Parse("maxsize=5;x=1;flush=1;maxfiles=10;");
  EXPECT_TRUE(all.flush);
  EXPECT_EQ(all.maxFiles, 10u);
  EXPECT_EQ(all.maxBytes, 5u << 20);
  const SinkOptions bad = SinkOptions::Parse("flush;maxfiles=ten;maxsize=-1;;=;flush=2x");
  EXPECT_FALSE(bad.flush);
  EXPECT_EQ(bad.maxFiles, 0u);
  EXPECT_EQ(bad.maxBytes, 0u);
  EXPECT_TRUE(SinkOptions::Parse("flush=1").flush);  // the last entry may lack its semicolon
}

}  // namespace
