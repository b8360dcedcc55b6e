// What the adapters for loggers do at the edges: `edges CASE` runs one, as an application of that
// name. It ends with 0 if all that the case can see by itself is right; loggers_test.py sees the
// traces.
#define G_LOG_USE_STRUCTURED
#define G_LOG_DOMAIN "edges.glib"
#include <spdlog/spdlog.h>

#include <quor/glib.h>
#include <QtCore/QLoggingCategory>
#include <iostream>
#include <quor/ostream.hpp>
#include <quor/qt.hpp>
#include <quor/quor.hpp>
#include <quor/spdlog.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

QUOR_POINT(lines, "Edges", "Lines");
QUOR_POINT(details, "Edges", "Details");
int g_seenBefore = 0;

bool SpdlogLevels() {
  const auto sink = std::make_shared<quor::SpdlogSink>();
  spdlog::logger nameless("", sink), plain("plain", sink);
  for (spdlog::logger* log : {&nameless, &plain}) {
    log->set_level(spdlog::level::trace);
    log->set_pattern("no pattern is applied: %v");
  }
  nameless.trace("level trace");
  nameless.debug("level debug");
  nameless.critical("level critical");
  plain.info(std::string("a\0b", 3));
  plain.info("");
  plain.flush();
  return true;
}

bool SpdlogThreads() {
  const auto sink = std::make_shared<quor::SpdlogSink>();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&sink, i] {
      spdlog::logger log("threads.t" + std::to_string(i), sink);
      for (int n = 0; n < 50; ++n) log.info("{} of {}", n, i);
    });
  for (std::thread& thread : threads) thread.join();
  return true;
}

void Before(QtMsgType, const QMessageLogContext&, const QString&) {
  ++g_seenBefore;
  qWarning("said inside a handler");
}

QtMessageHandler g_chained = nullptr;
void Chained(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  g_chained(type, context, message);
}

bool QtHandlers() {
  qInstallMessageHandler(Before);
  quor::InstallQtMessageHandler();
  quor::InstallQtMessageHandler();
  qInfo("to the handler before, once");
  bool right = g_seenBefore == 1;
  // One that calls the handler before it, and then ours again: a circle.
  g_chained = qInstallMessageHandler(Chained);
  quor::InstallQtMessageHandler();
  qDebug("in a circle");
  qCritical("%s", "\xC3\xA4");
  right = right && g_seenBefore == 1;  // the circle ends at ours
  return right;
}

bool QtFatal() {
  quor::InstallQtMessageHandler();
  qFatal("the end");
}

bool StreamLines() {
  quor::OStream out(lines, QUOR_INFO), off(details, QUOR_INFO | QUOR_DEVELOPER);
  out << "one" << std::flush << " line" << std::endl << "two\nthree\n\n" << 'x' << 4 << '\n';
  out << std::string(65534, 'y') << "\xC3\xA4z" << '\n';
  off << "is off\n";
  out << "the rest";
  return out.good() && off.good();
}

bool StreamThreads() {
  std::ostringstream terminal;
  std::streambuf* const before = std::clog.rdbuf(terminal.rdbuf());
  {
    const quor::Redirect log(std::clog, lines, QUOR_WARN);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
      threads.emplace_back([i] {
        const std::string digit = std::to_string(i);
        for (int n = 0; n < 100; ++n) std::clog << digit << digit << digit << "\n";
      });
    for (std::thread& thread : threads) thread.join();
    std::clog << "begun here, ";
    std::thread([] { std::clog << "another thread's line\n"; }).join();
    std::clog << "ended here\n";
  }
  std::clog << "and back";
  std::clog.rdbuf(before);
  return terminal.str() == "and back";
}

bool GlibLevels() {
  g_log_set_writer_func(quor_glib_writer_only, nullptr, nullptr);
  g_info("level info");
  g_debug("level debug");
  g_log(nullptr, G_LOG_LEVEL_MESSAGE, "by the older call");
  const GLogField fields[] = {{"MESSAGE", "cut here", 3},
                              {"GLIB_DOMAIN", "own.domain.x", 10},
                              {"CODE_FILE", "own.c", -1},
                              {"CODE_LINE", "12x", -1}};
  g_log_structured_array(G_LOG_LEVEL_CRITICAL, fields, 4);
  g_log_structured_array(G_LOG_LEVEL_WARNING, fields + 1, 1);
  return true;
}

}  // namespace

int main(int, char** words) {
  const std::string which = words[1];
  quor_application(words[1]);
  const struct {
    const char* name;
    bool (*run)();
  } cases[] = {{"SpdlogLevels", SpdlogLevels}, {"SpdlogThreads", SpdlogThreads},
               {"QtHandlers", QtHandlers},     {"QtFatal", QtFatal},
               {"StreamLines", StreamLines},   {"StreamThreads", StreamThreads},
               {"GlibLevels", GlibLevels}};
  for (const auto& one : cases)
    if (which == one.name) return one.run() ? 0 : 1;
  return 2;
}
