// The service's end of its keeper: see keeper_process.h.
//
// Owner    Borrows the descriptors that it passes on.
// Errors   Without a keeper all goes on; only what an application leaves in its memory when it ends
//          while no service runs cannot be brought. Told in the log once.
// Threads  The service's one thread.
#pragma once

#include <vector>

#include "quor/keeper/keeper_wire.h"

class SegmentKeeper {
 public:
  // Finds the keeper in the folder or starts one. Gives what an earlier service left behind.
  // REQUIRES: one thread; the caller holds the lock of the folder.
  std::vector<KeptApp> Open(const std::string& folder);

  // The number under which it is held; 0 when it is not.
  std::uint64_t Keep(const std::string& app, std::uint32_t pid, int segment, int event,
                     int process);
  // The same application under another name.
  void Rename(std::uint64_t id, const std::string& app, std::uint32_t pid, int segment, int event,
              int process);
  void Forget(std::uint64_t id);

 private:
  bool Connect(const std::string& path, std::vector<KeptApp>* held);
  void Check(bool sent);

  Descriptor m_socket;
  std::uint64_t m_lastId = 0;
};
