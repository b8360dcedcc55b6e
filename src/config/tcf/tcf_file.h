// Opens .tcf files.
//
// Errors   The stream is not open; `why`, if it is not null, gets the reason of the reading one. A
//          folder never opens. A pipe opens only where the caller may be blocked until another
//          program uses its other end.
// Threads  Touches only its arguments.
#pragma once

#include <fstream>
#include <string>

enum class TcfPipes { Refused, Read };

std::ifstream OpenTcf(const std::string& path, std::string* why = nullptr,
                      TcfPipes pipes = TcfPipes::Refused);
// Empties a file that exists.
std::ofstream CreateTcf(const std::string& path);
