// All commands of trc. Each maker adds its command to the program.
#pragma once

#include <memory>

#include "commands/command.h"

// For files.
std::unique_ptr<Command> MakeGen(CLI::App& program);
std::unique_ptr<Command> MakeInfo(CLI::App& program);
std::unique_ptr<Command> MakeDump(CLI::App& program);
std::unique_ptr<Command> MakeSave(CLI::App& program);
std::unique_ptr<Command> MakeConvert(CLI::App& program);
std::unique_ptr<Command> MakeExport(CLI::App& program);
std::unique_ptr<Command> MakeImport(CLI::App& program);
std::unique_ptr<Command> MakeFind(CLI::App& program);
std::unique_ptr<Command> MakeTree(CLI::App& program);
std::unique_ptr<Command> MakeStats(CLI::App& program);
std::unique_ptr<Command> MakeStack(CLI::App& program);
std::unique_ptr<Command> MakeFilter(CLI::App& program);
std::unique_ptr<Command> MakeNotes(CLI::App& program);

// For a running service, and one that is traced itself.
std::unique_ptr<Command> MakeTail(CLI::App& program);
std::unique_ptr<Command> MakeCapture(CLI::App& program);
std::unique_ptr<Command> MakeApps(CLI::App& program);
std::unique_ptr<Command> MakeShow(CLI::App& program);
std::unique_ptr<Command> MakeSet(CLI::App& program);
std::unique_ptr<Command> MakeSink(CLI::App& program);
std::unique_ptr<Command> MakeForget(CLI::App& program);
std::unique_ptr<Command> MakeConfig(CLI::App& program);
std::unique_ptr<Command> MakeSetup(CLI::App& program);
std::unique_ptr<Command> MakeEmit(CLI::App& program);
