// The address of a service on the web: "https://collector:4318/base".
//
// Errors   Nothing and a reason. Names and passwords in an address are refused, because they would
//          stand in the lists of processes.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct WebAddress {
  bool tls = false;
  std::string host;  // without brackets
  std::uint16_t port = 0;
  std::string path;  // "" or "/base", without a slash at its end

  // "collector:4318", "[::1]:4318".
  std::string Authority() const;
};

// `port`: when it has none.
std::optional<WebAddress> ReadWebAddress(const std::string& text, std::uint16_t port,
                                         std::string* why);
