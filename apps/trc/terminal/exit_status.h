// The exit statuses of trc.
#pragma once

enum ExitStatus : int {
  kExitGood = 0,
  kExitNo = 1,             // the answer is no, or traces were lost
  kExitBad = 2,            // wrong use, bad input, or output that could not be written
  kExitDamaged = 3,        // done, but the file is damaged: standard error says where
  kExitInterrupted = 130,  // SIGINT, by the shells' custom
};
