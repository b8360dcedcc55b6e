// The colour rules that come with the program, off until somebody chooses them.
//
// Shape    Two sets with the same names and filter texts, for light and for dark lists. The
//          contrast of each rule is at least kLeastContrast, also in the 256 colours of a terminal.
// Threads  Pure.
#pragma once

#include "where/colours/colour_rules.h"

enum class ColourGround { Light, Dark };

ColourRules ShippedColours(ColourGround ground);
