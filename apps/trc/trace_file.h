// Opening a trace file the way the desktop does, and waiting for its traces.
//
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>

#include "documents/trace_file_doc.h"
#include "terminal_host.h"

// The loaded document of `path`. Null when it cannot be opened, and standard error says why, or
// when the load was interrupted. Damage is told on standard error; the traces are given all the
// same. The document must go before the host.
std::unique_ptr<CTraceFileDoc> OpenTraceFile(TerminalHost& host, const std::string& path);
// The exit status of a command that would end with `status`: an answer from a damaged file is not
// the whole one. What has failed or was interrupted stays so.
int StatusWithDamage(const CTraceFileDoc& document, int status);
