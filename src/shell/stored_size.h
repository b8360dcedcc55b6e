// The outer size of a window, and whether it fills its room, kept in the settings store between
// runs.
//
// Shape    "Window Width", "Window Height" and "Window Maximised" below a key; device-independent
//          pixels.
// Errors   A size that no window can have reads as the proposed one.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/frame.h"

// Proposed size in, wanted size out.
void ReadWindowSize(const std::string& key, int& widthPx, int& heightPx);

// Keeps the size of a restored window; a minimised or maximised one, or one without extent, leaves
// what is stored.
void StoreWindowSize(const std::string& key, SizeType type, int widthPx, int heightPx);

bool ReadWindowMaximised(const std::string& key);
// A minimised window leaves what is stored.
void StoreWindowMaximised(const std::string& key, SizeType type);
