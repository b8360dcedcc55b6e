#include "quor/ring/checked_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

CheckedDescriptor::CheckedDescriptor(int number) : m_number(number) {
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

CheckedDescriptor& CheckedDescriptor::operator=(CheckedDescriptor&& other) noexcept {
  if (this == &other) return *this;
  // Another descriptor with our number, even for our file, can exist only if ours was lost.
  if (m_number != other.m_number) Close();
  m_number = std::exchange(other.m_number, -1);
  m_device = other.m_device;
  m_inode = other.m_inode;
  return *this;
}

void CheckedDescriptor::Close() {
  const int number = Get();
  if (number >= 0) close(number);
  m_number = -1;
}

bool CheckedDescriptor::IsStillThere(struct stat* status) const {
  return m_number >= 0 && fstat(m_number, status) == 0 && status->st_dev == m_device &&
         status->st_ino == m_inode;
}
