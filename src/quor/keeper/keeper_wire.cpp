#include "quor/keeper/keeper_wire.h"

#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kNameMax = 4096;
constexpr int kDescriptors = 3;

struct Head {
  std::uint32_t version, word;
  std::uint64_t id;
  std::uint32_t pid, spare;
};

bool Send(int socket, const Head& head, const std::string& name, const int* descriptors) {
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * kDescriptors)] = {};
  iovec parts[2] = {{const_cast<Head*>(&head), sizeof head},
                    {const_cast<char*>(name.data()), std::min(name.size(), kNameMax)}};
  msghdr message{};
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  if (descriptors) {
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof(int) * kDescriptors);
    std::memcpy(CMSG_DATA(rights), descriptors, sizeof(int) * kDescriptors);
  }
  ssize_t sent = 0;
  do {
    sent = sendmsg(socket, &message, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent > 0;
}

// All that came are ours to close, however many.
int TakeDescriptors(msghdr& message, KeptApp* app) {
  Descriptor* const places[kDescriptors] = {&app->segment, &app->event, &app->process};
  int taken = 0;
  for (cmsghdr* head = CMSG_FIRSTHDR(&message); head; head = CMSG_NXTHDR(&message, head)) {
    if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) continue;
    const std::size_t count = (head->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i, ++taken) {
      int number = -1;
      std::memcpy(&number, CMSG_DATA(head) + i * sizeof(int), sizeof number);
      Descriptor descriptor(number);
      if (taken < kDescriptors) *places[taken] = std::move(descriptor);
    }
  }
  return taken;
}

}  // namespace

void Descriptor::Close() {
  if (m_number >= 0) close(m_number);
  m_number = -1;
}

bool SendKeep(int socket, const KeptApp& app) {
  const int descriptors[kDescriptors] = {app.segment.Get(), app.event.Get(), app.process.Get()};
  return Send(socket, {kVersion, static_cast<std::uint32_t>(KeeperWord::Keep), app.id, app.pid, 0},
              app.app, descriptors);
}

bool SendKeeperWord(int socket, KeeperWord word, std::uint64_t id) {
  return Send(socket, {kVersion, static_cast<std::uint32_t>(word), id, 0, 0}, {}, nullptr);
}

bool ReceiveKeeperWord(int socket, KeeperWord* word, KeptApp* app) {
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * 8)] = {};
  Head head{};
  char name[kNameMax];
  iovec parts[2] = {{&head, sizeof head}, {name, sizeof name}};
  msghdr message{};
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t got = 0;
  do {
    got = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) return false;
  *app = {};
  const int descriptors = TakeDescriptors(message, app);
  const auto size = static_cast<std::size_t>(got);
  if (size < sizeof head || head.version != kVersion) return false;
  *word = static_cast<KeeperWord>(head.word);
  app->id = head.id;
  app->pid = head.pid;
  app->app.assign(name, size - sizeof head);
  return *word == KeeperWord::Keep ? descriptors == kDescriptors : descriptors == 0;
}
