// Older trace files, and the files that a conversion leaves on the disk.
#pragma once

#include "documents_fixture.h"
#include "support/folder_names.h"
#include "support/old_trc_image.h"

class ConversionTest : public DocumentsTest {
 protected:
  // An older file of so many traces, "trace 1" to "trace N".
  std::string OldFile(unsigned traces, const std::string& name = "web.trc") {
    OldTrcImage image;
    image.Machine(1, "web");
    for (unsigned i = 1; i <= traces; ++i) {
      image.Trace({.text = "trace " + std::to_string(i), .count = i, .machine = 1});
    }
    return image.WriteTo(m_temp.File(name));
  }
  // The names in the folder, sorted, each with the first word of the file's content.
  std::string Folder() const {
    std::string all;
    for (const std::string& name : NamesIn(m_temp.Path())) all += name + KindOf(name) + " ";
    return all;
  }

 private:
  std::string KindOf(const std::string& name) const {
    const std::string path = m_temp.File(name);
    if (std::filesystem::is_directory(path)) return "/";
    return ReadAll(path).rfind("Version 2.2", 0) == 0 ? "(old)" : "";
  }
};
