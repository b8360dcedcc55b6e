// Unpacks the body of a request: gzip of one or several members, or zlib.
//
// Errors   Words for the peer. TooLong: there is more than `bytesMax`. Malformed also for bytes
//          that follow the packed ones, and for an end in the middle.
// Threads  Any.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

enum class Unpacking { Done, Malformed, TooLong };

// By the words of Content-Encoding, "" for none.
enum class BodyCoding { Plain, Gzip, Zlib, Unknown };
BodyCoding BodyCodingOf(std::string_view words);
// REQUIRES: Gzip or Zlib.
Unpacking Unpack(BodyCoding coding, Bytes packed, std::size_t bytesMax,
                 std::vector<std::uint8_t>& bytes, std::string* why);
