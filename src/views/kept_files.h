// A folder of small files, each with a text that is kept under a key.
//
// Shape    The name of a file is a print of its key. A file gets its new text in one step
//          (notes/new_notes.h), so that a process that is killed leaves the old text or the new
//          one. Several programs may use the folder: the last one that writes a key wins. Beyond
//          the most files that the folder may have, those written longest ago are removed.
// Rights   Folder and files are the user's alone.
// Errors   False and the reason with a path. What is no regular file, or too long, is Unreadable.
// Threads  One.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "notes/new_notes.h"

class KeptFiles {
 public:
  KeptFiles(std::string folder, std::size_t mostFiles, std::size_t mostBytes)
      : m_folder(std::move(folder)), m_mostFiles(mostFiles), m_mostBytes(mostBytes) {}

  enum class Found { Nothing, Text, Unreadable };
  Found Read(const std::string& key, std::string& text, std::string* why) const;
  bool Write(const std::string& key, std::string_view text, std::string* why,
             const NotesSteps& steps = {}) const;
  // So that it is told about once, and can be looked at: it becomes "broken-...", in place of the
  // one put aside before. Unless it has another text by now than the one that was read.
  void PutAside(const std::string& key, const std::string& text) const;
  std::string PathOf(const std::string& key) const;
  // Calls `visit` with path and text of each file that can be read, whatever its name says.
  using Visit = std::function<void(const std::string& path, const std::string& text)>;
  void ForEach(const Visit& visit) const;

 private:
  Found ReadPath(const std::string& path, std::string& text, std::string* why) const;
  void RemoveOldest(const std::string& path) const;

  const std::string m_folder;
  const std::size_t m_mostFiles, m_mostBytes;
};
