// The process that reads the files of modules: this program, started with kSymbolWorkerOption and
// the symbol folders behind it.
//
// A trace file may name any file, and a file can be made to harm its reader. So the reader has no
// other task, little memory, and little time for each stack. Its end costs the names of one stack.
#pragma once

// Was this program started as the reader? Then main does nothing but to return RunSymbolWorker.
bool IsSymbolWorker(int argc, const char* const* argv);
// Answers stacks with their names, on standard input, until its other end closes it.
int RunSymbolWorker(int argc, const char* const* argv);
