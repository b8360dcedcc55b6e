// Where an application's traces go, as one text: "socket:orders1" or
// "file:/var/tmp/orders.trc?maxsize=10&maxfiles=3&flush=1".
//
// Shape    The options stand behind the last "?". Those of a file are flush (0 or 1), maxfiles and
//          maxsize (megabytes), each at most once. Those of a socket are kept as they are.
//          Capitals of "file", "socket" and of the options do not matter.
// Errors   Nothing, and a reason: half a sink would write where nobody looks.
// Threads  Pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct WrittenSink {
  bool file = false;
  std::string name;     // the path, or the machine
  std::string options;  // "maxsize=10;maxfiles=3;"

  static std::optional<WrittenSink> Read(std::string_view text, std::string* why = nullptr);
};
