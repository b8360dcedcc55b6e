// The options that name an engine, of all commands that talk to one.
//
// Errors   Wrong use is a CLI::ParseError, from Complete.
// Threads  One.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "quor/engine/jetstream/nats_link.h"

class EngineOptions {
 public:
  void AddTo(CLI::App& app);
  void Complete();

  const std::string& Stream() const { return m_stream; }
  // `name`: of the connection, for people who look after the servers.
  NatsAddress Address(const std::string& name) const;

 private:
  std::string m_servers, m_stream = "QUOR1", m_keysFolder;
  NatsAddress m_address;
};
