// The names for completion, of a file and of a live service. A service is never started.
//
// Errors   No names.
// Threads  One. Calls block; the caller has a limit of its own.
#pragma once

#include "complete/complete_words.h"

class KnownNames final : public CompletionNames {
 public:
  // So much of all files together is read.
  static constexpr std::size_t kFileBytesMax = 16u << 20;
  static constexpr std::size_t kAppsMax = 64;

  std::vector<std::string> Apps(const std::string& machine) override;
  std::vector<std::string> Traces(const std::string& machine, const std::string& app) override;
  std::vector<std::string> FilePaths(const std::vector<std::string>& words,
                                     std::string_view prefix) override;
  std::vector<std::string> LivePaths(const std::string& machine, std::string_view prefix) override;
  std::vector<std::string> FileNames(const std::vector<std::string>& words,
                                     ChoiceField field) override;
  std::vector<std::string> LiveNames(const std::string& machine, ChoiceField field) override;
  std::vector<std::string> Profiles() override;
};
