// The options of the service by their words, which the command line and the configuration file
// share.
//
// Errors   A reason that names what a value may be.
// Threads  One.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quor/log/log.h"
#include "quor/protocol/certificates.h"

struct ServiceWord {
  std::string_view word, type, help;
  // A switch has the value yes or no in a file, and none on the command line.
  bool isPath = false, isRepeatable = false, isSwitch = false;
};
const std::vector<ServiceWord>& ServiceWords();
const ServiceWord* FindServiceWord(std::string_view word);

struct GivenOption {
  std::string word, value;
};

struct ServiceSettings {
  LogLevel logLevel = LogLevel::Info;
  std::vector<std::string> listen;
  std::string stateFolder, socketFolder, keysFolder;  // empty: the default
  std::uint32_t defaultSettings = 7;
  unsigned takers = 4, takerStore = 64;  // streams; MiB of each
  std::string revoked, group;
  bool machine = false;  // all accounts of the machine
  std::string user;      // as whom it serves then; empty: the default
  RoleRules roles;

  // What is given later replaces what stands here, all values of a repeatable word as well.
  // REQUIRES: all are good, see WhyNotOption.
  void Take(const std::vector<GivenOption>& given);
};

// "" if the word is one and has such a value.
std::string WhyNotOption(const std::string& word, const std::string& value);
