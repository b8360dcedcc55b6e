// Where a command keeps its state, if nobody says it: in $STATE_DIRECTORY, else among that of the
// services of this user.
#pragma once

#include <string>

// "": nowhere, there is no home.
std::string UsualState(const std::string& file);
