// dump and find with --follow: the traces of a file, and what is appended to it.
//
// Shape    A file under a name, and those that take its place. Pipes and standard input are read to
//          their end, as they come.
// Errors   Messages on standard error, and the exit status. SIGINT is the usual end.
#pragma once

#include "commands/followed_traces.h"

// `test` chooses, beside the options; without a trace for which it holds the answer is kExitNo.
int RunFollow(const DumpOptions& options, FollowedTraces::Test test = {});
