// The address of traces that a cluster stores, as a person writes it where a machine is named:
//
//   nats://host[:port][,host...]/STREAM[?machine=web1&app=orders&since=10m]
//
// Shape    Servers, a stream, and what of it is wanted. `since` is "now" if it is missing, "start",
//          a number of s, m, h or d ago, or a UTC time as 2026-11-22T00:30Z: when the messages came
//          to the servers. %XX in a value stands for a byte. Servers elsewhere than on this machine
//          are reached over TLS; with tls:// all are.
// Errors   None and a reason in words.
// Threads  Pure.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

constexpr std::uint16_t kRelayPort = 4222;

struct RelayAddress {
  struct Server {
    std::string host;  // without brackets
    std::uint16_t port = kRelayPort;
    bool operator==(const Server&) const = default;
  };
  struct Since {
    enum class From { Now, Start, Ago, Time } from = From::Now;
    std::chrono::seconds ago{0};
    std::chrono::sys_seconds time{};
    bool operator==(const Since&) const = default;
  };
  bool tls = false;
  std::vector<Server> servers;  // one or more
  std::string stream;
  std::string machine, app;  // empty: all
  Since since;

  // "host:port", an IPv6 address in brackets.
  std::vector<std::string> ServerTexts() const;
  bool operator==(const RelayAddress&) const = default;
};

// Is it meant as such an address? A machine's name never is.
bool IsRelayAddress(const std::string& text);
std::optional<RelayAddress> ParseRelayAddress(const std::string& text, std::string* why = nullptr);
// Parses to the same address.
std::string RelayAddressText(const RelayAddress& address);
