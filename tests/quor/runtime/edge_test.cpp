// What a traced process may do to its runtime: many names, long texts, no service, early and late.
#include <cstring>
#include <fstream>

#include "fake_service.h"
#include "quor/quor.hpp"
#include "quor/runtime/process/clock.h"

namespace {

QUOR_POINT(edge_point, "Edge", "Case");

std::string Formatted(std::string_view format) {
  quor::detail::TextOf<1000> text;
  quor::detail::FormatAll(text, format);
  return {text.Data(), text.Size()};
}
template <class... T>
std::string Formatted(std::string_view format, const T&... arguments) {
  quor::detail::TextOf<1000> text;
  quor::detail::FormatAll(text, format, arguments...);
  return {text.Data(), text.Size()};
}

enum class Colour : unsigned char { Red = 3 };

TEST(Format, EachPlaceTakesTheNextArgument) {
  const char* const none = nullptr;
  char array[8] = "abc";
  EXPECT_EQ(Formatted("{} {} {}", 1, -2L, 18446744073709551615ull), "1 -2 18446744073709551615");
  EXPECT_EQ(Formatted("{}|{}|{}", 0.1, 1e300, 2.5f), "0.1|1e+300|2.5");
  EXPECT_EQ(Formatted("{}{}{}", true, false, 'x'), "truefalsex");
  EXPECT_EQ(Formatted("{} {} {} {}", std::string("s"), std::string_view("v"), "l", array),
            "s v l abc");
  EXPECT_EQ(Formatted("{}", none), "(null)");
  EXPECT_EQ(Formatted("{} {}", reinterpret_cast<void*>(0xBEEF), nullptr), "0xbeef 0x0");
  EXPECT_EQ(Formatted("{} {}", Colour::Red, static_cast<unsigned char>(200)), "3 200");
}

TEST(Format, BracesAndMissingAndSurplusArguments) {
  EXPECT_EQ(Formatted("{{{}}}", 1), "{1}");
  EXPECT_EQ(Formatted("{} {}", 1), "1 {}");
  EXPECT_EQ(Formatted("{}", 1, 2), "1");
  EXPECT_EQ(Formatted("{ } { {x}", 1), "{ } { {x}");
  EXPECT_EQ(Formatted("{", 1), "{");
  EXPECT_EQ(Formatted("", 1), "");
  EXPECT_EQ(Formatted("as it is {} {{"), "as it is {} {{");
}

TEST(Format, TextsLongerThanTheStackBufferAreWhole) {
  const std::string longText(5000, 'x');
  EXPECT_EQ(Formatted("{}-{}-{}", longText, 7, longText), longText + "-7-" + longText);
}

TEST(Clock, TheCounterAndTheKernelAgreeAndTimeNeverRunsBackwards) {
  TraceClock clock;
  clock.Begin();
  std::uint64_t last = 0;
  for (int i = 0; i < 3'000'000; ++i) {
    const Stamp now = clock.Now();
    ASSERT_GE(now.ticPs, last);
    last = now.ticPs;
    if (i % 1000 != 0) continue;
    const Stamp before = TraceClock::ByKernel();
    const Stamp between = clock.Now();
    const Stamp after = TraceClock::ByKernel();
    ASSERT_GE(between.ticPs + 1'000'000, before.ticPs);  // within a microsecond
    ASSERT_LE(between.ticPs, after.ticPs + 1'000'000);
    ASSERT_GE(between.date, before.date);
    if (before.date == after.date && (before.time >> 11) == (after.time >> 11)) {
      ASSERT_GE((between.time & 2047) + 1, before.time & 2047);
      ASSERT_LE(between.time & 2047, (after.time & 2047) + 1);
    }
  }
}

TEST(Edge, SixtyThousandNamesAreDistinctAndTheOnesBeyondShareOneThatSaysSo) {
  FakeService service;
  constexpr int kNames = 70000;
  TracedChild app([](TracedChild&) {
    for (int i = 0; i < kNames; ++i) {
      quor_thread_name(("thread " + std::to_string(i)).c_str());
      QUOR_TRACE_INFO(edge_point, "{}", i);
      if (i % 1000 == 0) quor_flush(10000);
    }
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor(
      [&] {
        seen->Pump();
        return seen->m_ended;
      },
      60000));
  seen->Finish();
  EXPECT_EQ(app.Wait(), 0);
  ASSERT_EQ(seen->m_traces.size(), static_cast<std::size_t>(kNames));
  int named = 0;
  for (const SeenTrace& trace : seen->m_traces) {
    const bool own = trace.tid == "thread " + trace.text;
    named += own ? 1 : 0;
    ASSERT_TRUE(own || trace.tid == "(no room for more names)") << trace.tid;
    ASSERT_EQ(trace.component, "Edge");
  }
  EXPECT_GT(named, 60000);
  EXPECT_LT(named, 65535);
}

TEST(Edge, MorePointsThanTheSegmentHoldsShareOneEntryThatSaysSo) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    static quor_point points[17000];
    static char names[17000][16];
    for (int i = 0; i < 17000; ++i) {
      std::snprintf(names[i], sizeof names[i], "c%d", i);
      points[i] = QUOR_POINT_INIT("Many", names[i]);
      quor_register(&points[i]);
    }
    quor_trace(&points[16999], QUOR_INFO, nullptr, 0, "last", 4);
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("last"); }));
  EXPECT_EQ(seen->m_traces.back().category, "c16999");  // never a wrong name
  const std::vector<std::string> names = seen->PointNames();
  EXPECT_EQ(names.size(), 16384u);
  EXPECT_EQ(names.back(), "Quor/(no room for more trace points)");
}

TEST(Edge, PointsOfTheSameNamesShareAnEntryAndItsSettings) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    static quor_point one = QUOR_POINT_INIT("Same", "Name"), two = QUOR_POINT_INIT("Same", "Name");
    quor_register(&one);
    quor_register(&two);
    self.AwaitGo();
    while (!quor_on(&one, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    return quor_on(&two, QUOR_VERBOSE) ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    const auto names = seen->PointNames();
    return std::count(names.begin(), names.end(), "Same/Name") == 1;
  }));
  seen->SetAll(0x1F);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Edge, TextsAreCutAtALimitOfBytesAndNeverInsideACharacter) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    std::string text(65534, 'x');
    text += "\xC3\xA4";  // a character of two bytes across the limit
    quor_trace(&edge_point, QUOR_INFO, nullptr, 0, text.data(), text.size());
    quor_tracef(&edge_point, QUOR_INFO, nullptr, 0, "%s", text.c_str());
    quor_tracef(&edge_point, QUOR_INFO, nullptr, 0, "%s", std::string(3000, 'y').c_str());
    quor_trace(&edge_point, QUOR_INFO, nullptr, 0, nullptr, 0);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_traces.size() == 4;
  }));
  EXPECT_EQ(seen->m_traces[0].text, std::string(65534, 'x'));
  EXPECT_EQ(seen->m_traces[1].text, std::string(65534, 'x'));
  EXPECT_EQ(seen->m_traces[2].text, std::string(3000, 'y'));
  EXPECT_EQ(seen->m_traces[3].text, "");
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Edge, ATraceHasExactlyOneSeverityTheGravestOfThoseGiven) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    QUOR_TRACE_AT(edge_point, QUOR_INFO | QUOR_ERROR, "two");
    QUOR_TRACE_AT(edge_point, 0u, "none");
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_traces.size() == 2;
  }));
  EXPECT_EQ(seen->m_traces[0].attributes, kAttributeError);
  EXPECT_EQ(seen->m_traces[1].attributes, kAttributeInfo);
}

TEST(Edge, ABlockSaysItsBeginAndItsEnd) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    {
      QUOR_BLOCK(edge_point, "request {}", 7);
      QUOR_TRACE_WARN(edge_point, "inside");
    }
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_traces.size() == 3;
  }));
  EXPECT_EQ(seen->m_traces[0].text, "Begin: request 7");
  EXPECT_EQ(seen->m_traces[1].text, "inside");
  EXPECT_EQ(seen->m_traces[2].text, "End: request 7");
}

TEST(Edge, ABlockOfALongTextSaysAllOfItAtItsEndToo) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    const char* const none = nullptr;
    { QUOR_BLOCK(edge_point, "{} {}", std::string(3000, 'x'), "\xC3\xA4"); }
    QUOR_TRACE_INFO(edge_point, none);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("(null)"); }));
  const std::string text = std::string(3000, 'x') + " \xC3\xA4";
  EXPECT_EQ(seen->m_traces[0].text, "Begin: " + text);
  EXPECT_EQ(seen->m_traces[1].text, "End: " + text);
}

TEST(Edge, WithoutAServiceTracesWaitInTheRingAndNothingFails) {
  FakeService service;
  service.Stop();
  TracedChild app([](TracedChild& self) {
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(edge_point, "{}", i);
    self.Report(static_cast<std::uint64_t>(quor_flush(50)));
    self.AwaitGo();
    return 0;
  });
  EXPECT_EQ(app.Reported(), 0u);  // nothing left the process
  service.Listen();
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_traces.size() == 100;
  }));
}

TEST(Edge, AServiceThatComesBackGetsTheSameSegmentAndWhatWasTracedMeanwhile) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    QUOR_TRACE_INFO(edge_point, "before");
    self.AwaitGo();
    QUOR_TRACE_INFO(edge_point, "between");
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("before"); }));
  const std::uint64_t started = seen->m_hello.startedNs;
  service.Stop();
  seen.reset();
  app.Go();
  app.Reported();
  service.Listen();
  const auto again = service.Accept();
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->m_hello.startedNs, started);
  EXPECT_TRUE(WaitFor([&] { return again->Has("between"); }));
  EXPECT_EQ(again->m_traces.size(), 1u);
}

TEST(Edge, ARefusedApplicationGoesOnAndAGarblingServiceIsLeft) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    return 0;
  });
  auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->Send({0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3});
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_ended;
  }));
  seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->Send(EncodeRefused("too old"));
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_ended;
  }));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Edge, AProgramThatEndsAtOnceStillHandsItsTracesOver) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    QUOR_TRACE_INFO(edge_point, "only");
    exit(0);  // with static destructors and the library's own end
    return 1;
  });
  EXPECT_EQ(app.Wait(), 0);
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->Finish();
  ASSERT_EQ(seen->m_traces.size(), 1u);
  EXPECT_EQ(seen->m_traces[0].text, "only");
}

TEST(Edge, TheFirstTraceStartsAServiceOnceWhereThatIsNotForbidden) {
  FakeService service;
  service.Stop();
  const std::string reported = service.Folder() + "/started", program = service.Folder() + "/quord";
  std::ofstream(program) << "#!/bin/sh\necho x >> " << reported << "\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  setenv("QUOR_QUORD", program.c_str(), 1);
  setenv("QUOR_AUTOSTART", "1", 1);
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(edge_point, "one");
    self.AwaitGo();
    return 0;
  });
  EXPECT_TRUE(WaitFor([&] { return std::filesystem::exists(reported); }));
  service.Listen();
  EXPECT_NE(service.Accept(),
            nullptr);  // and closed: the application must not start another
  EXPECT_NE(service.Accept(), nullptr);
  unsetenv("QUOR_QUORD");
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_EQ(std::filesystem::file_size(reported), 2u);
}

}  // namespace
