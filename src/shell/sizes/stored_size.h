// The outer size of a window, and whether it is maximised, kept in the settings store between runs.
//
// Shape    "Window Width", "Window Height" and "Window Maximised" below a key; device-independent
//          pixels.
// Errors   A size that no window can have is ignored in favour of the proposed one.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/frame.h"

// Proposed size in, wanted size out.
void ReadWindowSize(const std::string& key, int& widthPx, int& heightPx);

// Stores the size of a restored window. For a minimised or maximised window, or one of size 0, the
// stored size stays.
void StoreWindowSize(const std::string& key, SizeType type, int widthPx, int heightPx);

bool ReadWindowMaximised(const std::string& key);
// For a minimised window the stored value stays.
void StoreWindowMaximised(const std::string& key, SizeType type);
