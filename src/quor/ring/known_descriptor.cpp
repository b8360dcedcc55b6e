#include "quor/ring/known_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

KnownDescriptor::KnownDescriptor(int number) : m_number(number) {
  if (m_number >= 0 && m_number <= STDERR_FILENO) {
    const int higher = fcntl(m_number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(m_number);
    m_number = higher;
  }
  struct stat status {};
  if (m_number < 0) return;
  if (fstat(m_number, &status) != 0) {
    m_number = -1;
    return;
  }
  m_device = status.st_dev;
  m_inode = status.st_ino;
}

KnownDescriptor& KnownDescriptor::operator=(KnownDescriptor&& other) noexcept {
  if (this == &other) return *this;
  // Another descriptor with our number, even for our file, can exist only if ours was lost.
  if (m_number != other.m_number) Close();
  m_number = std::exchange(other.m_number, -1);
  m_device = other.m_device;
  m_inode = other.m_inode;
  return *this;
}

void KnownDescriptor::Close() {
  const int number = Get();
  if (number >= 0) close(number);
  m_number = -1;
}

bool KnownDescriptor::IsStillThere(struct stat* status) const {
  return m_number >= 0 && fstat(m_number, status) == 0 && status->st_dev == m_device &&
         status->st_ino == m_inode;
}
