// The shop that quor-demo acts: workers that take requests and trace what they do.
#pragma once

#include "pace.h"

// Works until the pace is stopped. `number` from 1.
void RunWorker(unsigned number, Pace& pace);
