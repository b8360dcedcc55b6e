// The descriptors 0, 1 and 2 of the program.
//
// Threads  One, before any file is opened.
#pragma once

// Of these, the ones that whoever started the program has closed stay useless and taken, so that
// no file gets their number and then what is meant for a user.
void TakeClosedStandardFiles();
