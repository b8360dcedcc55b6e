// What is wanted of one application of one machine, as it is kept in the cluster.
//
// Shape    Settings by component and category, because the ids of traces are the machine's own.
// Errors   False and a reason. A value that is malformed is bad as a whole.
// Threads  Plain values.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "quor/cluster/cluster.pb.h"
#include "quor/protocol/quor.pb.h"

// The bucket, and the subjects of questions: see MachineSubject.
inline constexpr const char* kSettingsBucket = "quor1-settings";
constexpr std::size_t kWantedBytes = 512 * 1024;
constexpr std::size_t kWantedSettingsMax = 16384;

struct Wanted {
  using Trace = std::pair<std::string, std::string>;  // component, category
  std::string machine, app;
  std::map<Trace, std::uint32_t> settings;
  std::optional<quor::wire::Sink> sink;
  std::string who;

  // Takes what an editor submitted for an application whose traces stand in `known`. False: it
  // names a trace that is not there, or there would be too many.
  bool Add(const quor::wire::Submit& submit, const quor::wire::App& known, std::string* why);
};

struct WantedState {
  std::uint64_t revision = 0;
  std::uint32_t waiting = 0;
  std::string trouble;
  bool operator==(const WantedState&) const = default;
};

// A question fits into one message of the engine. False: it is malformed.
std::vector<std::uint8_t> WriteQuestion(const quor::cluster::QuestionMessage& question);
bool ReadQuestion(Bytes bytes, quor::cluster::QuestionMessage& question);
bool WriteWanted(const Wanted& wanted, std::vector<std::uint8_t>& value, std::string* why);
bool ReadWanted(Bytes value, Wanted& wanted, std::string* why);
std::vector<std::uint8_t> WriteWantedState(const WantedState& state);
bool ReadWantedState(Bytes value, WantedState& state, std::string* why);

// "<machine>.<app>", and where its state is told.
std::string WantedKey(const std::string& machine, const std::string& app);
std::string WantedStateKey(const std::string& machine, const std::string& app);
// All keys of a machine's wanted values; states are not among them.
std::string WantedKeys(const std::string& machine);
// Questions that only read are asked here. Those that change what the machine keeps have a subject
// of their own, so that the engine can allow one without the other.
std::string MachineSubject(const std::string& machine, bool changes);
