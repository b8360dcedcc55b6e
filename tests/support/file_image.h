// The bytes of a file that a test writes, in any format: the base of trc_image.h and
// old_trc_image.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/mapped_file.h"

// Bytes with the zero guard that a mapped file has.
class GuardedBytes {
 public:
  explicit GuardedBytes(std::string_view bytes) : m_size(bytes.size()) {
    m_bytes.assign(bytes.begin(), bytes.end());
    m_bytes.resize(m_size + MappedFile::kGuardBytes);
  }
  Bytes View() const { return {m_bytes.data(), m_size}; }
  const std::uint8_t* At(std::size_t offset) const { return m_bytes.data() + offset; }

 private:
  std::vector<std::uint8_t> m_bytes;
  std::size_t m_size;
};

// `Image` is the derived class, so that its calls can follow these.
template <class Image>
class FileImage {
 public:
  // One byte, unchanged.
  Image& Raw(int byte) {
    m_bytes += static_cast<char>(byte);
    return static_cast<Image&>(*this);
  }
  // Removes the last `bytes` bytes.
  Image& Cut(std::size_t bytes) {
    m_bytes.resize(m_bytes.size() - bytes);
    return static_cast<Image&>(*this);
  }

  const std::string& Bytes() const { return m_bytes; }
  std::size_t Size() const { return m_bytes.size(); }
  GuardedBytes Guarded() const { return GuardedBytes(m_bytes); }
  // Returns the path.
  const std::string& WriteTo(const std::string& path) const {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
    return path;
  }

 protected:
  explicit FileImage(std::string_view header) : m_bytes(header) {}

  std::string m_bytes;
};
