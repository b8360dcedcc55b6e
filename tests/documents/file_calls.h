// Intercepts the calls by which this program deletes, renames and syncs files. The test program
// defines these functions itself, so that they replace the system library's
// (conversion_safety_test.cpp).
#pragma once

#include <functional>
#include <string>

// Called before each call, with "unlink web.trc.old", "rename web.trc web.trc.old" or "sync
// web.trc.tmp 1234" (bytes), on the calling thread. A result other than 0 is the error that the
// call then returns without being made.
class FileCalls {
 public:
  using Callback = std::function<int(const std::string& call)>;
  explicit FileCalls(Callback callback) { Current() = std::move(callback); }
  ~FileCalls() { Current() = nullptr; }
  FileCalls(const FileCalls&) = delete;
  FileCalls& operator=(const FileCalls&) = delete;

  static int Ask(const std::string& call) { return Current() ? Current()(call) : 0; }

 private:
  static Callback& Current() {
    static Callback callback;
    return callback;
  }
};
