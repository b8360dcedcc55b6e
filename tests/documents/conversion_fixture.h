// Older trace files, and what a conversion leaves on the disk.
#pragma once

#include "documents_fixture.h"
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
  // The names in the folder, sorted, each with the first word of what is in it.
  std::string Folder() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_temp.Path())) {
      names.push_back(entry.path().filename().string() + KindOf(entry));
    }
    std::sort(names.begin(), names.end());
    std::string all;
    for (const std::string& name : names) all += name + " ";
    return all;
  }

 private:
  static std::string KindOf(const std::filesystem::directory_entry& entry) {
    if (entry.is_directory()) return "/";
    return ReadAll(entry.path().string()).rfind("Version 2.2", 0) == 0 ? "(old)" : "";
  }
};
