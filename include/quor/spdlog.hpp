// Traces what spdlog logs. A sink like any other:
//
//   auto log = std::make_shared<spdlog::logger>("orders.db", std::make_shared<quor::SpdlogSink>());
//
// Shape    The logger's name gives component and category (logger.h), its source location file and
//          line. trace: Info, Developer, Verbose. debug: Info, Developer. info, warn: Info, Warn.
//          err, critical: Error. The text is the message alone: no pattern is applied.
// Errors   It never throws.
// Threads  Any number of loggers and threads may share one; they do not wait for each other.
#ifndef QUOR_SPDLOG_HPP
#define QUOR_SPDLOG_HPP

#include <spdlog/details/log_msg.h>
#include <spdlog/formatter.h>
#include <spdlog/sinks/sink.h>

#include <memory>
#include <string>

#include "logger.h"

namespace quor {

class SpdlogSink final : public spdlog::sinks::sink {
 public:
  void log(const spdlog::details::log_msg& message) override {
    const unsigned attributes = AttributesOf(message.level);
    quor_point* const point =
        quor_logger_point(message.logger_name.data(), message.logger_name.size(), "spdlog");
    if (!quor_on(point, attributes)) return;
    quor_trace(point, attributes, message.source.filename,
               static_cast<unsigned>(message.source.line), message.payload.data(),
               message.payload.size());
  }
  void flush() override {}  // a trace has left when log returns
  void set_pattern(const std::string&) override {}
  void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

 private:
  static unsigned AttributesOf(spdlog::level::level_enum level) noexcept {
    switch (level) {
      case spdlog::level::trace:
        return QUOR_INFO | QUOR_DEVELOPER | QUOR_VERBOSE;
      case spdlog::level::debug:
        return QUOR_INFO | QUOR_DEVELOPER;
      case spdlog::level::warn:
        return QUOR_WARN;
      case spdlog::level::err:
      case spdlog::level::critical:
        return QUOR_ERROR;
      default:
        return QUOR_INFO;
    }
  }
};

}  // namespace quor

#endif
