// Opens .tcf files.
//
// Errors   The stream is not open. That of a pipe never is: to open one would block until another
//          program uses its other end.
// Threads  Touches only its arguments.
#pragma once

#include <fstream>
#include <string>

std::ifstream OpenTcf(const std::string& path);
// Empties a file that exists.
std::ofstream CreateTcf(const std::string& path);
