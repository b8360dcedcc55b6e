// How a configuration document reaches a machine without a process.
#pragma once

#include <string>

#include "config/document/config_doc.h"
#include "support/fake_machine.h"

// The machine outlives the document.
inline ConfigClient ClientOf(FakeMachine& machine) {
  ConfigClient client;
  client.connect = [&machine](const std::string& host, std::string* why) {
    return machine.Connect(host, why);
  };
  client.open = [&machine](const std::string&, const std::string& app) {
    return machine.Open(app, nullptr);
  };
  return client;
}
