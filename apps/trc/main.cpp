#include "command_line.h"
#include "complete/complete.h"
#include "symbols/worker/symbol_worker.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/standard_files.h"

int main(int argc, char** argv) {
  TakeClosedStandardFiles();
  if (IsSymbolWorker(argc, argv)) return RunSymbolWorker(argc, argv);
  if (IsCompletion(argc, argv)) return RunCompletion(argc, argv);
  CatchSignals();
  CommandLine line;
  const Command* const command = line.Read(argc, argv);
  if (!command) return line.Status();
  const int status = command->Run();
  return status == kExitInterrupted && Interrupted() ? InterruptedStatus() : status;
}
