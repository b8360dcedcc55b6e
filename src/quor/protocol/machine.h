// The meaning of a text that names a machine.
//
// Shape    "", "localhost", "127.0.0.1", "::1" and this machine's host name, with or without its
//          domain, in any case: the local service, by its unix socket, also without a network.
//          "name", "name:port", "[address]:port": another service, over TLS.
// Threads  Any.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

constexpr std::uint16_t kDefaultPort = 7447;

struct Machine {
  bool local = true;
  std::string host;  // of another service, without brackets
  std::uint16_t port = kDefaultPort;
};

// None and a reason for a text that names no machine.
std::optional<Machine> ParseMachine(const std::string& text, std::string* why = nullptr);

// "host:port", an IPv6 address in brackets.
std::string AddressOf(const std::string& host, std::uint16_t port);

// The host name without its domain; "localhost" when the system has none.
std::string LocalHostName();
