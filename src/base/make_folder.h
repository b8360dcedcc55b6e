// Makes a folder, and those above it.
//
// Errors   False and the system's reason.
// Threads  Any.
#pragma once

#include <string>

// Only this user may enter the folder (0700); new folders above it are open to others (0755). One
// that exists stays as it is.
bool MakeFolder(const std::string& path, std::string* why);
