// The log of a service: one line per event on standard error. A line begins with a priority for
// the journal if standard error goes there.
//
// Errors   None. A line that cannot be written immediately, because nobody reads the terminal or
//          pipe, is lost. The next line says how many were lost.
// Threads  The service's one thread.
#pragma once

#include <optional>
#include <string>

enum class LogLevel { Error = 3, Warning = 4, Info = 6, Debug = 7 };

// "error", "warning", "info", "debug"; none for other words.
std::optional<LogLevel> LogLevelOf(const std::string& name);
void SetLogLevel(LogLevel level);
// Of the program, in each line; "quord" if nothing is set.
void SetLogName(const std::string& name);
// Standard error goes to this file from now on. When the file has become large, at a start or
// later, it is renamed to path.1 and a new one is begun. False when it cannot be opened.
bool LogToFile(const std::string& path);
constexpr long kLogFileBytesMax = 1 << 20;
// Control bytes of the text are shown as "?": parts of it come from peers.
void Log(LogLevel level, const std::string& text);
