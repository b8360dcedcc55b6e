// Packs the body of a request.
//
// Threads  Any.
#pragma once

#include <string>
#include <string_view>

// gzip, one member. Empty: there is no memory.
std::string PackGzip(std::string_view bytes);
