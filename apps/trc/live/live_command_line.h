// The options of the live commands.
//
// Errors   Wrong use is a CLI::ParseError.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "command_line.h"
#include "live/live.h"

// The settings of a point: one preset (off, support, developer, max), or any of Info, Warn, Error,
// Developer, Verbose, Location, Stack. "developer" is the preset, "Developer" the bit.
bool IsSettingsWord(const std::string& word);
unsigned SettingsOf(const std::vector<std::string>& words);

class LiveParser {
 public:
  // Parses "--columns" like the commands for files.
  using ReadColumns = std::function<std::vector<Column>(const std::string& list)>;

  LiveParser(CLI::App& app, ReadColumns readColumns, std::vector<Column> defaultColumns);
  // The command that was given, if it is one of these.
  std::optional<LiveCommand> Chosen();

 private:
  CLI::App* Add(const char* name, const char* help, const char* footer);
  void AddNumber(CLI::App* app, const char* names, const char* option, std::uint64_t& number,
                 const char* help, const char* type = "N");
  void AddLimits(CLI::App* app, LiveLimits& limits);
  void AddTail();
  void AddCapture();
  void AddConfig();
  void AddSet();
  void AddSink();
  void AddEmit();
  LiveCommand ChosenTail();
  LiveCommand ChosenSet();
  LiveCommand ChosenSink();
  LiveCommand ChosenEmit();
  void TakeMachineAndApp(std::vector<std::string> words, std::string& machine,
                         std::string& app) const;

  CLI::App& m_app;
  const ReadColumns m_readColumns;
  const std::vector<Column> m_defaultColumns;
  CLI::App *m_tailApp = nullptr, *m_captureApp = nullptr, *m_appsApp = nullptr,
           *m_showApp = nullptr, *m_setApp = nullptr, *m_sinkApp = nullptr, *m_emitApp = nullptr;
  CLI::Option* m_columnsOption = nullptr;
  TailOptions m_tail;
  CaptureOptions m_capture;
  AppsOptions m_apps;
  ShowOptions m_show;
  SetOptions m_set;
  SinkCommand m_sink;
  EmitOptions m_emit;
  std::string m_format = "text", m_columns, m_components;
  std::vector<std::string> m_words;  // positional arguments of show, set and sink
  bool m_all = false;
};
