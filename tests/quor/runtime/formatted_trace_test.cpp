// The functions of the C interface that format as printf does.
#include <cerrno>
#include <cstdarg>

#include "fake_service.h"

namespace {

quor_point formatted_point = QUOR_POINT_INIT("Db", "Query");

// A log function as a C program has it.
void Log(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  quor_vtracef(&formatted_point, QUOR_WARN, "log.c", 7, format, arguments);
  va_end(arguments);
}

std::string TextsOf(const SeenApp& app) {
  std::string texts;
  for (const auto& trace : app.m_traces) texts += trace.text + "\n";
  return texts;
}

TEST(FormattedTrace, ArgumentsMayComeAsAList) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    errno = 4711;
    Log("query %d took %.1f s", 7, 2.5);
    Log(nullptr);
    Log("%s", std::string(5000, 'x').c_str());
    return errno == 4711 && quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Pump(), seen->m_traces.size() == 3; }));
  EXPECT_EQ(TextsOf(*seen), "query 7 took 2.5 s\n(null)\n" + std::string(5000, 'x') + "\n");
  EXPECT_EQ(app.Wait(), 0);
}

TEST(FormattedTrace, ABlockInCSaysItsBeginAndItsEndHoweverLong) {
  FakeService service;
  const std::string fits(240, 'f'), longer(241, 'l'), longest(70000, 'x');
  TracedChild app([&](TracedChild&) {
    quor_block block;
    for (const std::string& text : {std::string("query 1"), fits, longer, longest}) {
      quor_block_begin(&block, &formatted_point, QUOR_INFO, __FILE__, __LINE__, "%s", text.c_str());
      quor_block_end(&block);
    }
    quor_block_end(&block);  // it has ended
    quor_block_begin(&block, &formatted_point, QUOR_INFO | QUOR_DEVELOPER, nullptr, 0, "off");
    quor_block_end(&block);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Pump(), seen->m_traces.size() >= 8; }));
  EXPECT_EQ(app.Wait(), 0);
  const std::string cut(65535 - 7, 'x'), cutEnd(65535 - 5, 'x');
  EXPECT_EQ(TextsOf(*seen), "Begin: query 1\nEnd: query 1\nBegin: " + fits + "\nEnd: " + fits +
                                "\nBegin: " + longer + "\nEnd: " + longer + "\nBegin: " + cut +
                                "\nEnd: " + cutEnd + "\n");
}

TEST(FormattedTrace, ABlockThatWasOffAtItsBeginHasNoEnd) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_register(&formatted_point);
    quor_block block;
    quor_block_begin(&block, &formatted_point, QUOR_INFO | QUOR_VERBOSE, nullptr, 0, "off");
    self.Report(1);
    self.AwaitGo();
    while (!quor_on(&formatted_point, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    quor_block_end(&block);
    quor_trace(&formatted_point, QUOR_INFO, nullptr, 0, "last", 4);
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Pump(), !seen->PointNames().empty(); }));
  EXPECT_EQ(app.Reported(), 1u) << "the block has begun";
  seen->SetAll(0x1F);
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return seen->Has("last"); }));
  EXPECT_EQ(TextsOf(*seen), "last\n");
  EXPECT_EQ(app.Wait(), 0);
}

}  // namespace
