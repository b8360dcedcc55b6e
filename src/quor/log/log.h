// What the service tells whoever runs it: one line per event on standard error, with a priority in
// front that the journal understands when standard error goes there.
//
// Errors   None. A line that cannot be written at once, because nobody reads the terminal or pipe,
//          is lost; how many were is told with the next.
// Threads  The service's one thread.
#pragma once

#include <optional>
#include <string>

enum class LogLevel { Error = 3, Warning = 4, Info = 6, Debug = 7 };

// "error", "warning", "info", "debug"; nothing for others.
std::optional<LogLevel> LogLevelOf(const std::string& word);
void SetLogLevel(LogLevel level);
// Standard error goes to this file from now on. When it has grown large, at some start or later, it
// is renamed to path.1 and begun anew. False when it cannot be opened.
bool LogToFile(const std::string& path);
constexpr long kLogFileBytesMax = 1 << 20;
// Control bytes of the text are shown as "?": parts of it come from peers.
void Log(LogLevel level, const std::string& text);
