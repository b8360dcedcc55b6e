// Opens a trace file like the desktop, and waits for its traces.
//
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>

#include "documents/trace_file_doc.h"
#include "terminal/terminal_host.h"

// The loaded document of `path`. Null when it cannot be opened, after a message on standard error,
// or after an interrupt. Damage is reported on standard error, and the readable traces are there.
// The document must be destroyed before the host. `shown`: what messages call it, if it has another
// name for the user.
std::unique_ptr<CTraceFileDoc> OpenTraceFile(TerminalHost& host, const std::string& path,
                                             const TraceLoadSetup& setup = {},
                                             const std::string& shown = {});
// Is the file unchanged since it was opened? If not, its traces may be wrong, and a message on
// standard error says what another program did. `out` is the path that the command was to write:
// the message then says that it was not written. Appending is no change.
bool IsUnchanged(const MappedFile& file, const std::string& path, const std::string& out = {});
bool IsUnchanged(const CTraceFileDoc& document, const std::string& path,
                 const std::string& out = {});
// The exit status of a command that would end with `status`: an answer from a damaged file is not
// complete. Failures and interrupts keep their status.
int StatusWithDamage(const CTraceFileDoc& document, int status);
// The same for a command that only printed: a change of the file is reported, too.
int StatusOfAnswer(const CTraceFileDoc& document, const std::string& path, int status);
