// Sending and receiving the link's bytes, with the descriptors of a hello.
//
// Errors   Send: false when the peer is gone or takes nothing for `timeoutMs`. Receive: see
//          LinkReceived. No signal is raised for a lost peer.
// Threads  One at a time per direction.
#pragma once

#include <cstdint>
#include <vector>

// A socket connected to the service that listens on `path`, which belongs to this user or to root;
// -1 and errno otherwise. Never waits longer than the kernel takes for a local connection.
int ConnectToService(const char* path);

// `descriptors` (at most two) travel with the first byte.
bool SendOnLink(int socket, const std::vector<std::uint8_t>& bytes,
                const int* descriptors = nullptr, int descriptorCount = 0, int timeoutMs = 1000);

// What one call brought. Descriptors are close-on-exec and the caller's; a peer that sends more
// than two at once loses the others.
struct LinkReceived {
  std::size_t bytes = 0;
  int descriptors[2] = {-1, -1};
  int descriptorCount = 0;
  bool ended = false;  // the peer is gone
};
// Takes what is there, at most `size` bytes, without waiting.
LinkReceived ReceiveOnLink(int socket, std::uint8_t* to, std::size_t size);
