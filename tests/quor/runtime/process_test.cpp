// What the process around the runtime may do to it, and what it must not notice: fork, dlclose,
// small stacks, errno, shared memory that somebody else writes to.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "fake_service.h"
#include "quor/quor.hpp"
#include "quor/runtime/runtime.h"

namespace {

QUOR_POINT(process_point, "Process", "Step");

std::unique_ptr<SeenApp> AcceptAndSet(FakeService& service, std::uint32_t settings) {
  auto seen = service.Accept();
  EXPECT_NE(seen, nullptr);
  if (seen) seen->SetAll(settings);
  return seen;
}

TEST(Process, ErrnoIsWhatItWasAfterEveryCall) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    errno = 77;
    quor_application("orders");
    static quor_point late = QUOR_POINT_INIT("Process", "Late");
    quor_trace(&late, QUOR_INFO, nullptr, 0, "first use", 9);
    quor_tracef(&late, QUOR_INFO, __FILE__, __LINE__, "%s", std::string(5000, 'x').c_str());
    quor_thread_name("worker");
    if (errno != 77) return 1;
    self.AwaitGo();
    while (!quor_on(&process_point, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    errno = 78;
    QUOR_TRACE_INFO(process_point, "with place and stack");
    return errno == 78 ? 0 : 2;
  });
  const auto seen = AcceptAndSet(service, QUOR_INFO | QUOR_VERBOSE | QUOR_LOCATION | QUOR_STACK);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Process, AHandlerOnASmallStackTracesWithoutACallStackInsteadOfRunningOverItsEnd) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    static char small[16 * 1024];
    quor_application("orders");
    self.AwaitGo();
    while (!quor_on(&process_point, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    stack_t stack{};
    stack.ss_sp = small;
    stack.ss_size = sizeof small;
    sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_flags = SA_ONSTACK;
    action.sa_handler = [](int) {
      quor_trace(&process_point, QUOR_INFO, __FILE__, 7, "on a small stack", 16);
    };
    sigaction(SIGUSR1, &action, nullptr);
    raise(SIGUSR1);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = AcceptAndSet(service, QUOR_INFO | QUOR_VERBOSE | QUOR_LOCATION | QUOR_STACK);
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return seen->Has("on a small stack"); }));
  EXPECT_EQ(seen->m_traces.back().line, 7u);
  EXPECT_EQ(seen->m_traces.back().stack, "(the signal stack is too small to walk the call stack)");
  EXPECT_EQ(app.Wait(), 0);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kSmallThreadBytes = 256 * 1024;  // the frames of the sanitizers are larger
#else
constexpr std::size_t kSmallThreadBytes = 16 * 1024;
#endif

TEST(Process, AThreadWithASmallStackTracesWithItsCallStack) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    while (!quor_on(&process_point, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    const auto least = static_cast<std::size_t>(sysconf(_SC_THREAD_STACK_MIN));
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::max(kSmallThreadBytes, least));
    const auto work = [](void*) -> void* {
      QUOR_TRACE_INFO(process_point, "in a {} thread", "small");
      return nullptr;
    };
    pthread_t thread;
    if (pthread_create(&thread, &attributes, work, nullptr) != 0) return 2;
    pthread_join(thread, nullptr);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = AcceptAndSet(service, QUOR_INFO | QUOR_VERBOSE | QUOR_LOCATION | QUOR_STACK);
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return seen->Has("in a small thread"); }));
  EXPECT_NE(seen->m_traces.back().stack.find("quor_runtime_tests+0x"), std::string::npos);
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Process, APointThatIsDeclaredTwiceIsOnePoint) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    static quor_point twice = QUOR_POINT_INIT("Process", "Twice");
    quor_declare(&twice);
    quor_declare(&twice);
    quor_application("orders");
    quor_declare(&twice);
    QUOR_TRACE_INFO(twice, "traced");
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("traced"); }));
  const std::vector<std::string> names = seen->PointNames();
  EXPECT_EQ(std::count(names.begin(), names.end(), "Process/Twice"), 1);
}

TEST(Process, TheLastOfTwoApplicationNamesHolds) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("library");
    quor_application("program");
    quor_application(nullptr);
    QUOR_TRACE_INFO(process_point, "named");
    self.AwaitGo();
    return 0;
  });
  // The trace may be taken over any of the links, as each name introduces the application again.
  std::unique_ptr<SeenApp> seen;
  std::string traced;
  EXPECT_TRUE(WaitFor([&] {
    if (!seen || seen->m_ended) seen = service.Accept(100);
    if (seen && seen->Has("named")) traced = seen->m_traces.back().app;
    return seen && seen->m_hello.app == "program" && !traced.empty();
  }));
  EXPECT_EQ(traced, "program");
}

TEST(Process, ALibraryWithTracePointsStaysWhenItIsClosed) {
  FakeService service;
  const std::string plugin = getenv("QUOR_PLUGIN");
  TracedChild app([&](TracedChild& self) {
    quor_application("orders");
    void* const library = dlopen(plugin.c_str(), RTLD_NOW);
    if (!library) return 1;
    auto* const trace = reinterpret_cast<void (*)(const char*)>(dlsym(library, "PluginTrace"));
    trace("loaded");
    dlclose(library);
    self.AwaitGo();
    // The link thread has written into its point by now.
    while (!quor_on(&process_point, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    trace("closed");
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("loaded"); }));
  seen->SetAll(QUOR_INFO | QUOR_VERBOSE);
  app.Go();
  EXPECT_TRUE(WaitFor([&] { return seen->Has("closed"); }));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Process, ATraceThatFoundNoRingIsReportedByTheFirstOneThatThereIs) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    Runtime::Get().CountLost();  // as a handler does that interrupted the start
    QUOR_TRACE_INFO(process_point, "first");
    Runtime::Get().CountLost();
    QUOR_TRACE_INFO(process_point, "second");
    const quor_counts counts = Counts();
    self.AwaitGo();
    return counts.traced == 4 && counts.lost == 2 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("second"); }));
  EXPECT_EQ(seen->m_drops, 2u);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Process, AChildThatCanHaveNoRingCountsForItselfAndLeavesTheParentsAlone) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    quor_application("orders");
    QUOR_TRACE_INFO(process_point, "parent");
    const pid_t child = fork();
    if (child == 0) {
      const rlimit none{0, 0};
      setrlimit(RLIMIT_NOFILE, &none);
      QUOR_TRACE_INFO(process_point, "child");
      QUOR_TRACE_INFO(process_point, "child");
      const quor_counts counts = Counts();
      _exit(counts.traced == 2 && counts.lost == 2 && quor_flush(0) == 1 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    QUOR_TRACE_INFO(process_point, "parent again");
    const quor_counts counts = Counts();
    return WEXITSTATUS(status) == 0 && counts.traced == 2 && counts.lost == 0 &&
                   quor_flush(10000) == 1
               ? 0
               : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("parent again"); }));
  EXPECT_EQ(seen->m_traces.size(), 2u);
  EXPECT_EQ(app.Wait(), 0);
}

// Another process that holds the segment may have written to it. No count in it may lead out of its
// bounds.
TEST(Process, CountsThatAnotherProcessSpoiltLeadTheApplicationNowhere) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    QUOR_TRACE_INFO(process_point, "sound");
    self.AwaitGo();
    static quor_point late[100];
    for (quor_point& point : late) {
      point = QUOR_POINT_INIT("Process", "After");
      quor_register(&point);
    }
    for (int i = 0; i < 1000; ++i) {
      quor_thread_name(("name " + std::to_string(i)).c_str());
      QUOR_TRACE_INFO(process_point, "{}", i);
    }
    quor_flush(100);
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("sound"); }));
  seen->SendSink(SinkKind::File, path, "");
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_answered;
  }));
  SegmentHeader& header = *seen->Segment().Header();
  header.nameBytesUsed.store(0xFFFFFFF0);
  header.pointCount.store(0xFFFFFFF0);
  for (std::uint32_t at = 0; at + 2 < 4096; ++at)
    seen->Segment().Names()[at] = 0xFF;  // every name is 65,535 bytes long
  seen->Send(EncodePoke());
  app.Go();
  EXPECT_EQ(app.Reported(), 1u);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Process, AServiceThatWasThereAndWasStoppedIsNotStartedAgain) {
  FakeService service;
  const std::string reported = service.Folder() + "/started", program = service.Folder() + "/quord";
  std::ofstream(program) << "#!/bin/sh\necho x >> " << reported << "\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  setenv("QUOR_QUORD", program.c_str(), 1);
  setenv("QUOR_AUTOSTART", "1", 1);
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(process_point, "one");
    self.AwaitGo();
    return 0;
  });
  auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  service.Stop();
  seen.reset();
  // Until then it has looked for the old service and found none.
  const auto stopped = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
  EXPECT_TRUE(WaitFor([&] { return std::chrono::steady_clock::now() > stopped; }));
  service.Listen();
  EXPECT_NE(service.Accept(), nullptr);
  unsetenv("QUOR_QUORD");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(reported));
}

}  // namespace
