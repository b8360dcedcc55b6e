// One instance of an application, as streams count it.
//
// Owner    Shared by the hub and by everything that is to be sent of it.
// Threads  One.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

// One instance of an application, here or on a machine that forwards to this one.
struct Source {
  std::array<std::uint8_t, 16> instance{};  // the same after a restart of the service
  std::string machine, app, pid;
  // At the service of a machine: whose program it is. None: another machine forwarded it.
  std::optional<uid_t> account = {};
  std::uint64_t firstSerial = 0;  // `serial` when this service last met the source
  std::uint64_t serial = 0;       // traces that it has ever produced, delivered or lost
  bool ended = false;
  // Shared by everything that some stream has still to send.
  std::shared_ptr<const void> way = std::make_shared<char>();
  bool IsUnderWay() const { return way.use_count() > 1; }
  // For a source that traces to another machine: how many traces are known to have arrived there,
  // and the function that stores this number for a successor of this service.
  std::uint64_t forwarded = 0;
  std::function<void(std::uint64_t)> noteForwarded;
};
