// The address of the keeper's socket. A path that is longer than an address has room for is reached
// through its folder: the service's own socket may be as long as can be, and this is longer.
//
// Owner    Holds the folder open while the address is in use.
// Errors   Fill gives false and errno.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <string>

#include "quor/keeper/keeper_wire.h"

class KeeperAddress {
 public:
  bool Fill(const std::string& path);
  const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&m_address); }
  static constexpr socklen_t kBytes = sizeof(sockaddr_un);

 private:
  Descriptor m_folder;
  sockaddr_un m_address{};
};
