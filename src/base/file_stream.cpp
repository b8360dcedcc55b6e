#include "base/file_stream.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

void ds_File_t::FOStream_t::Attach(int descriptor, std::size_t blockBytes) {
  m_descriptor = descriptor;
  m_failed = false;
  m_error = 0;
  m_blockBytes = blockBytes;
  m_gathered.clear();
  m_gathered.reserve(blockBytes);
}

bool ds_File_t::FOStream_t::Write(const void* bytes, std::size_t size) {
  if (m_descriptor < 0) m_failed = true;
  const char* const from = static_cast<const char*>(bytes);
  if (m_gathered.size() + size > m_blockBytes && !Flush()) return false;
  if (size > m_blockBytes) return WriteThrough(from, size);
  if (!m_failed) m_gathered.insert(m_gathered.end(), from, from + size);
  return !m_failed;
}

bool ds_File_t::FOStream_t::Flush() {
  const bool written = WriteThrough(m_gathered.data(), m_gathered.size());
  m_gathered.clear();
  return written;
}

bool ds_File_t::FOStream_t::WriteThrough(const char* from, std::size_t size) {
  while (size > 0 && !m_failed) {
    const ssize_t written = write(m_descriptor, from, size);
    if (written > 0) {
      from += written;
      size -= static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      m_failed = true;
      m_error = written < 0 ? errno : ENOSPC;
    }
  }
  return !m_failed;
}

ds_BufferedOutputStream_t::ds_BufferedOutputStream_t(std::size_t size)
    : m_buffer(std::max<std::size_t>(size, 1)) {}

ds_BufferedOutputStream_t::~ds_BufferedOutputStream_t() {
  Close();
}

void ds_BufferedOutputStream_t::SetStream(ds_File_t::FOStream_t& stream) {
  // The collected bytes are for the previous stream.
  Close();
  Discard();
  m_stream = &stream;
}

// All bytes pass through the buffer, also a block that is longer than it. They may be in a mapped
// file that has become shorter, and the kernel's write would fail to read them there.
bool ds_BufferedOutputStream_t::WriteBuf(const void* bytes, std::size_t* size) {
  const std::size_t wanted = *size;
  *size = 0;
  if (!m_stream || !m_stream->OK()) return false;
  if (wanted > m_buffer.size() - m_used && !Flush()) return false;
  const auto* from = static_cast<const unsigned char*>(bytes);
  for (std::size_t left = wanted; left > 0;) {
    if (m_used == m_buffer.size() && !Flush()) return false;
    const std::size_t piece = std::min(left, m_buffer.size() - m_used);
    std::memcpy(m_buffer.data() + m_used, from, piece);
    m_used += piece;
    from += piece;
    left -= piece;
  }
  *size = wanted;
  return true;
}

bool ds_BufferedOutputStream_t::Close() {
  return Flush() && (!m_stream || m_stream->Flush());
}

void ds_BufferedOutputStream_t::Discard() {
  m_used = 0;
}

bool ds_BufferedOutputStream_t::Flush() {
  if (!m_stream) return m_used == 0;
  // Nothing is written after a gap: after a failed write the stream refuses all later ones.
  if (m_used > 0 && m_stream->Write(m_buffer.data(), m_used)) m_used = 0;
  return m_stream->OK();
}
