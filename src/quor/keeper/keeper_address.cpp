#include "quor/keeper/keeper_address.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

bool KeeperAddress::Fill(const std::string& path) {
  std::string name = path;
  if (name.size() >= sizeof m_address.sun_path) {
    const std::size_t slash = path.rfind('/');
    m_folder = Descriptor(open(path.substr(0, slash).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (m_folder.Get() < 0) return false;
    name = "/proc/self/fd/" + std::to_string(m_folder.Get()) + path.substr(slash);
  }
  if (name.size() >= sizeof m_address.sun_path) {
    errno = ENAMETOOLONG;
    return false;
  }
  m_address = {};
  m_address.sun_family = AF_UNIX;
  std::memcpy(m_address.sun_path, name.c_str(), name.size() + 1);
  return true;
}
