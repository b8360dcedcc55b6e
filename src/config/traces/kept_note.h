// What the windows say of the settings that a machine keeps for all later instances of an
// application.
//
// Threads  Pure.
#pragma once

#include <string>

class trace_App_i;

// "Kept for later starts: Net=max ("trc forget orders" takes it back)"; empty: nothing is kept.
std::string KeptNote(const trace_App_i& app);
