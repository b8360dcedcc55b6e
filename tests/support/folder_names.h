// The names in a folder.
#pragma once

#include <filesystem>
#include <set>
#include <string>

inline std::set<std::string> NamesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.insert(entry.path().filename().string());
  return names;
}
