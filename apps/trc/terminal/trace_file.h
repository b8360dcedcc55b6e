// Opening a trace file the way the desktop does, and waiting for its traces.
//
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>

#include "documents/trace_file_doc.h"
#include "terminal/terminal_host.h"

// The loaded document of `path`. Null when it cannot be opened, and standard error says why, or
// when the load was interrupted. Damage is told on standard error; the traces are given all the
// same. The document must go before the host.
std::unique_ptr<CTraceFileDoc> OpenTraceFile(TerminalHost& host, const std::string& path,
                                             const TraceLoadSetup& setup = {});
// Is the file still what was opened? If not, its traces are not what stood there, and standard
// error says what another program did to it. With the path that a command was to write: and that it
// has not. Appending to the file is no change.
bool IsUnchanged(const MappedFile& file, const std::string& path, const std::string& out = {});
bool IsUnchanged(const CTraceFileDoc& document, const std::string& path,
                 const std::string& out = {});
// The exit status of a command that would end with `status`: an answer from a damaged file is not
// the whole one. What has failed or was interrupted stays so.
int StatusWithDamage(const CTraceFileDoc& document, int status);
// That of a command that told what is in the file and wrote nothing: a change is told, too.
int StatusOfAnswer(const CTraceFileDoc& document, const std::string& path, int status);
