#include "quor/link/link_socket.h"

#include "quor/link/named_service.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int kDescriptorsMax = 2;

bool PeerIsTrusted(int socket, uid_t owner) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         (peer.uid == geteuid() || peer.uid == 0 || peer.uid == owner);
}

void PutDescriptors(msghdr& message, char* control, const int* descriptors, int count) {
  const std::size_t bytes = sizeof(int) * static_cast<std::size_t>(count);
  message.msg_control = control;
  message.msg_controllen = CMSG_SPACE(bytes);
  cmsghdr* const head = CMSG_FIRSTHDR(&message);
  head->cmsg_level = SOL_SOCKET;
  head->cmsg_type = SCM_RIGHTS;
  head->cmsg_len = CMSG_LEN(bytes);
  std::memcpy(CMSG_DATA(head), descriptors, bytes);
}

void TakeDescriptors(msghdr& message, LinkReceived& received) {
  for (cmsghdr* head = CMSG_FIRSTHDR(&message); head; head = CMSG_NXTHDR(&message, head)) {
    if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) continue;
    const std::size_t count = (head->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int descriptor = -1;
      std::memcpy(&descriptor, CMSG_DATA(head) + i * sizeof(int), sizeof descriptor);
      if (received.descriptorCount < kDescriptorsMax)
        received.descriptors[received.descriptorCount++] = descriptor;
      else
        close(descriptor);
    }
  }
}

int ConnectTo(const char* path, bool ofAnyUser, uid_t owner) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::size_t length = std::strlen(path);
  if (length >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  std::memcpy(address.sun_path, path, length);  // the rest is zero
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return -1;
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      !(ofAnyUser || PeerIsTrusted(socket, owner))) {
    const int error = errno != 0 ? errno : EACCES;
    close(socket);
    errno = error;
    return -1;
  }
  return socket;
}

}  // namespace

int ConnectToService(const char* path, uid_t owner) {
  return ConnectTo(path, false, owner);
}

int ConnectToNamedService(const char* path) {
  return ConnectTo(path, true, 0);
}

bool SendOnLink(int socket, const std::vector<std::uint8_t>& bytes, const int* descriptors,
                int descriptorCount, int timeoutMs) {
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * kDescriptorsMax)] = {};
  if (descriptorCount > kDescriptorsMax) return false;
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    iovec part{const_cast<std::uint8_t*>(bytes.data()) + sent, bytes.size() - sent};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (sent == 0 && descriptorCount > 0)
      PutDescriptors(message, control, descriptors, descriptorCount);
    const ssize_t taken = sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (taken >= 0) {
      sent += static_cast<std::size_t>(taken);
      continue;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN) return false;
    pollfd ready{socket, POLLOUT, 0};
    const int polled = poll(&ready, 1, timeoutMs);
    if (polled == 0 || (polled < 0 && errno != EINTR)) return false;
  }
  return true;
}

LinkReceived ReceiveOnLink(int socket, std::uint8_t* to, std::size_t size) {
  // Space for more descriptors than allowed, so that a peer's surplus is received and closed.
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * 16)] = {};
  iovec part{to, size};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  LinkReceived received;
  ssize_t taken = 0;
  do {
    taken = recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  } while (taken < 0 && errno == EINTR);
  if (taken < 0) {
    received.ended = errno != EAGAIN;
    return received;
  }
  TakeDescriptors(message, received);
  received.bytes = static_cast<std::size_t>(taken);
  received.ended = taken == 0;
  return received;
}
