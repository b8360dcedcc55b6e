#include "quor/received/received.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <thread>

namespace {

constexpr std::size_t kDescriptorsMax = 253;  // in one message, by the kernel
constexpr int kClosingMax = 256;

std::atomic<int> g_closing = 0;

// Of files in memory without a name, which have a file system of their own.
dev_t UnnamedDevice() {
  struct stat status {};
  const int file = memfd_create("quord", MFD_CLOEXEC);
  const bool isKnown = file >= 0 && fstat(file, &status) == 0;
  if (file >= 0) close(file);
  return isKnown ? status.st_dev : 0;
}

dev_t NamedDevice() {
  struct stat status {};
  return stat("/dev/shm", &status) == 0 ? status.st_dev : 0;
}

// False: it is no file, or nothing is known of it.
bool StateOf(int descriptor, struct statx* status) {
  return statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_TYPE, status) == 0;
}

bool IsQuicklyClosed(int descriptor) {
  struct statx status {};
  if (!StateOf(descriptor, &status)) return false;
  const linger none{};
  if (S_ISSOCK(status.stx_mode))
    return setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &none, sizeof none) == 0;
  return IsInSharedMemory(descriptor);
}

void TakeDescriptors(msghdr& message, std::vector<int>* to) {
  for (cmsghdr* head = CMSG_FIRSTHDR(&message); head; head = CMSG_NXTHDR(&message, head)) {
    if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) continue;
    const std::size_t count = (head->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int descriptor = -1;
      std::memcpy(&descriptor, CMSG_DATA(head) + i * sizeof(int), sizeof descriptor);
      to ? to->push_back(descriptor) : CloseReceived(descriptor);
    }
  }
}

}  // namespace

bool IsInSharedMemory(int descriptor) {
  // Asked again where it was not found: there may have been no descriptor left for it.
  static std::atomic<dev_t> unnamed = 0, named = 0;
  if (unnamed == 0) unnamed = UnnamedDevice();
  if (named == 0) named = NamedDevice();
  struct statx status {};
  if (!StateOf(descriptor, &status) || !S_ISREG(status.stx_mode)) return false;
  const dev_t device = makedev(status.stx_dev_major, status.stx_dev_minor);
  return device != 0 && (device == unnamed || device == named);
}

void CloseReceived(int descriptor) {
  if (IsQuicklyClosed(descriptor)) {
    close(descriptor);
    return;
  }
  if (g_closing.fetch_add(1) >= kClosingMax) return;
  try {
    std::thread([descriptor] {
      close(descriptor);
      --g_closing;
    }).detach();
  } catch (const std::system_error&) {
  }
}

ssize_t ReceiveAll(int socket, void* to, std::size_t size, std::vector<int>* descriptors) {
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * kDescriptorsMax)];
  iovec part{to, size};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t taken = 0;
  do {
    taken = recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  } while (taken < 0 && errno == EINTR);
  if (taken >= 0) TakeDescriptors(message, descriptors);
  return taken;
}

void EndPeer(int socket) {
  char bytes[16384];
  if (shutdown(socket, SHUT_RDWR) != 0) return;
  while (ReceiveAll(socket, bytes, sizeof bytes, nullptr) > 0) {
  }
}
