// The options of all commands that give traces: which traces, how many, and how they are shown.
//
// One definition, so that an option means the same everywhere. A command that cannot do what one
// asks for refuses it with the reason.
//
// Owner    Borrows the values, which it sets while the line is read and in Complete.
// Errors   Wrong use is a CLI::ValidationError.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "filter/trace_options.h"

// Why a command does not take an option; null: it does.
struct RefusedOptions {
  const char* columns = nullptr;
  const char* from = nullptr;
  const char* tail = nullptr;
  const char* context = nullptr;
  const char* follow = nullptr;
};

// For commands that write whole traces, and for live ones.
constexpr const char* kWholeTraces = "the traces are written whole, with all their values";
constexpr const char* kNoPlaces = "live traces have no index; --since takes a time";
constexpr const char* kNotFollowed =
    "goes with dump and find, which print traces as they are appended";
// One object in all files: it is known by its address.
inline constexpr char kFollowedAnyway[] =
    "live traces come as they are made; 'trc dump --follow FILE' follows a file";
constexpr const char* kNoLastOnes = "live traces have no last ones; --count ends after so many";

class SharedOptions {
 public:
  SharedOptions(CLI::App& app, TraceOptions& options) : m_app(app), m_options(options) {}

  void Add(const RefusedOptions& refused = {});
  // A path that no future name can complete is a mistake; where names still come, any other waits
  // for them.
  void RefuseHopelessPaths() const;
  // What only the whole line says. `choosesItself`: the command chooses by something else, too, as
  // find by its pattern.
  void Complete(bool choosesItself = false);

 private:
  CLI::Option* AddText(const char* names, std::optional<std::string>& text, const char* help,
                       const char* type);
  void AddNumber(const char* names, std::uint64_t& number, const char* help);
  void AddNames(const char* names, ChoiceField field, const char* help);
  void AddRefused(const char* names, const char* reason);
  void AddFollow(const char* refused);
  void AddChoice();
  void AddTimes();
  void AddWhere();
  void ReadSeverities();
  std::uint64_t Moment(const char* option, const std::string& text) const;

  CLI::App& m_app;
  TraceOptions& m_options;
  bool m_isLive = false;
  // An empty text is not the same as none.
  std::optional<std::string> m_columns, m_severities, m_since, m_until;
};
