// The calls by which this program deletes, renames and syncs files, seen and led by a test: the
// test program stands before the system's library with calls of its own
// (conversion_safety_test.cpp).
#pragma once

#include <functional>
#include <string>

// Asked before each call, as "unlink web.trc.old", "rename web.trc web.trc.old" or "sync
// web.trc.tmp 1234" (bytes), by whatever thread makes it. A number that is not 0 is the error that
// the call then gives, without being made.
class FileCalls {
 public:
  using Ear = std::function<int(const std::string& call)>;
  explicit FileCalls(Ear ear) { Current() = std::move(ear); }
  ~FileCalls() { Current() = nullptr; }
  FileCalls(const FileCalls&) = delete;
  FileCalls& operator=(const FileCalls&) = delete;

  static int Ask(const std::string& call) { return Current() ? Current()(call) : 0; }

 private:
  static Ear& Current() {
    static Ear ear;
    return ear;
  }
};
