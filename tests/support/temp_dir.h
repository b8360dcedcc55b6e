// A directory for one test, removed with its content at the end of the test.
#pragma once

#include <stdlib.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "support/remove_segments.h"

class TempDir {
 public:
  TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "tessera-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
    m_path = std::filesystem::canonical(name).string();
  }
  ~TempDir() {
    std::error_code ignored;
    RemoveSegments(m_path);
    std::filesystem::remove_all(m_path, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& Path() const { return m_path; }
  // The path of `name` in the directory; makes nothing.
  std::string File(std::string_view name) const { return m_path + "/" + std::string(name); }
  // The same, made with `bytes` as its content.
  std::string File(std::string_view name, std::string_view bytes) const {
    const std::string path = File(name);
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
  }

 private:
  std::string m_path;
};

// The bytes of a file; empty when there is none, yet.
inline std::string ReadIfThere(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The bytes of a file. The result for a missing file equals that of no other file.
inline std::string ReadAll(const std::string& path) {
  static std::atomic<int> missing = 0;
  if (!std::ifstream(path)) return "(no file " + std::to_string(++missing) + ")";
  return ReadIfThere(path);
}
