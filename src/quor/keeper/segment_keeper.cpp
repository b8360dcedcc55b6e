#include "quor/keeper/segment_keeper.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>

#include "quor/keeper/keeper_address.h"
#include "quor/keeper/keeper_process.h"
#include "quor/log/log.h"

std::vector<KeptApp> SegmentKeeper::Open(const std::string& folder) {
  const std::string path = folder + "/keeper.sock";
  std::vector<KeptApp> held;
  if (Connect(path, &held)) return held;
  std::string why;
  held.clear();
  if (!StartKeeper(path, &why) || !Connect(path, &held))
    Log(LogLevel::Warning, "no keeper can be started: " + why);
  return held;
}

bool SegmentKeeper::Connect(const std::string& path, std::vector<KeptApp>* held) {
  KeeperAddress address;
  if (!address.Fill(path)) return false;
  Descriptor keeper(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const timeval patience{2, 0};
  setsockopt(keeper.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  if (connect(keeper.Get(), address.Get(), KeeperAddress::kBytes) != 0) return false;
  KeeperWord word{};
  KeptApp app;
  while (ReceiveKeeperWord(keeper.Get(), &word, &app)) {
    if (word == KeeperWord::End) {
      // From now on a keeper that does not read must not hold the service up for long.
      setsockopt(keeper.Get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
      m_socket = std::move(keeper);
      return true;
    }
    m_lastId = std::max(m_lastId, app.id);
    held->push_back(std::move(app));
  }
  return false;
}

std::uint64_t SegmentKeeper::Keep(const std::string& app, std::uint32_t pid, int segment, int event,
                                  int process) {
  if (m_socket.Get() < 0 || segment < 0 || event < 0 || process < 0) return 0;
  const std::uint64_t id = ++m_lastId;
  Rename(id, app, pid, segment, event, process);
  return id;
}

void SegmentKeeper::Rename(std::uint64_t id, const std::string& app, std::uint32_t pid, int segment,
                           int event, int process) {
  if (m_socket.Get() < 0 || id == 0) return;
  KeptApp kept{id, pid, app, Descriptor(segment), Descriptor(event), Descriptor(process)};
  Check(SendKeep(m_socket.Get(), kept));
  for (Descriptor* const borrowed : {&kept.segment, &kept.event, &kept.process})
    borrowed->Release();
}

void SegmentKeeper::Forget(std::uint64_t id) {
  if (m_socket.Get() < 0 || id == 0) return;
  Check(SendKeeperWord(m_socket.Get(), KeeperWord::Forget, id));
}

void SegmentKeeper::Check(bool sent) {
  if (sent) return;
  Log(LogLevel::Warning, "the keeper has gone");
  m_socket.Close();
}
