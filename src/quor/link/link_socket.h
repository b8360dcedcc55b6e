// Sending and receiving the link's bytes, with the descriptors of a hello.
//
// Errors   Send: false when the peer has closed the connection or reads nothing for `timeoutMs`.
//          Receive: see LinkReceived. A lost peer raises no signal.
// Threads  One at a time per direction.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <vector>

// Returns a socket that is connected to the service at `path`; -1 and errno on failure. The service
// must be this user's, root's or `owner`'s, see TrustedOwner. Waits no longer than the kernel needs
// for a local connection.
int ConnectToService(const char* path, uid_t owner = 0);

// `descriptors` (at most two) are sent with the first byte.
bool SendOnLink(int socket, const std::vector<std::uint8_t>& bytes,
                const int* descriptors = nullptr, int descriptorCount = 0, int timeoutMs = 1000);

// The result of one call. The caller owns the descriptors, which are close-on-exec. If a peer sends
// more than two at a time, the others are closed.
struct LinkReceived {
  std::size_t bytes = 0;
  int descriptors[2] = {-1, -1};
  int descriptorCount = 0;
  bool ended = false;  // the peer has closed the connection
};
// Reads the bytes that have arrived, at most `size`, without waiting.
LinkReceived ReceiveOnLink(int socket, std::uint8_t* to, std::size_t size);
