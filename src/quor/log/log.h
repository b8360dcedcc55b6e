// What the service tells whoever runs it: one line per event on standard error, with a priority in
// front that the journal understands when standard error goes there.
//
// Errors   None: a line that cannot be written is lost.
// Threads  The service's one thread.
#pragma once

#include <optional>
#include <string>

enum class LogLevel { Error = 3, Warning = 4, Info = 6, Debug = 7 };

// "error", "warning", "info", "debug"; nothing for others.
std::optional<LogLevel> LogLevelOf(const std::string& word);
void SetLogLevel(LogLevel level);
// Control bytes of the text are shown as "?": parts of it come from peers.
void Log(LogLevel level, const std::string& text);
