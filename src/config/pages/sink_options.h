// The option string of a file sink: "flush=1;maxfiles=10;maxsize=5;".
//
// Threads  Pure.
#pragma once

#include <optional>
#include <string>

struct SinkPageOptions {
  unsigned flush = 0;     // each trace is written at once: 0 or 1
  unsigned maxFiles = 0;  // older files that are kept; 0: all
  unsigned maxSize = 0;   // in megabytes; 0: no limit
};

// All three keys, in the order above.
std::string SinkOptionText(const SinkPageOptions& options);
// The number behind the key ("flush="), wherever it is in the text; text that is no number counts
// as 0. Nothing if the key is missing.
std::optional<unsigned> SinkOptionNumber(const std::string& text, const char* key);

// The number that the digits of a field mean; nothing if there is another character. Kept: a very
// long number wraps around at 32 bits.
std::optional<unsigned> FieldNumber(const std::string& digits);
