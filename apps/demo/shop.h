// The shop that quor-demo simulates: workers that handle requests and trace their work.
#pragma once

#include "pace.h"

// Works until the pace is stopped. `number` from 1.
void RunWorker(unsigned number, Pace& pace);
