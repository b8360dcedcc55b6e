#include <spdlog/spdlog.h>

#include <quor/quor.hpp>
#include <quor/spdlog.hpp>

QUOR_APPLICATION("orders");

int main() {
  const auto log =
      std::make_shared<spdlog::logger>("orders.db", std::make_shared<quor::SpdlogSink>());
  log->set_level(spdlog::level::trace);  // what is traced is chosen in the monitor
  SPDLOG_LOGGER_INFO(log, "connected to {} in {} ms", "db.example.com", 12);
  log->warn("query {} took {:.1f} s", 7, 2.5);
  log->debug("for developers: off until it is switched on");
  log->error("query {} failed", 8);
}
