#include "shell/failed_open.h"

#include <filesystem>

#include "base/mapped_file.h"
#include "base/text.h"
#include "records/trc_walk.h"

namespace {

constexpr std::size_t kNamed = 3;  // the rest is in the details

std::string NameIn(const std::string& path) {
  const std::string name = std::filesystem::path(path).filename().string();
  return name.empty() ? path : name;
}

}  // namespace

std::string WhyUnreadable(const std::string& path) {
  std::string why;
  return MappedFile::Open(path, &why) ? std::string() : why;
}

std::string WhyRefused(const std::string& path) {
  const auto file = MappedFile::Open(path);
  return file && VersionOf(file->View()) == TrcVersion::Old ? "not converted" : "Invalid format.";
}

std::string FailedText(const std::vector<FailedOpen>& failed, std::size_t tried) {
  if (failed.empty()) return {};
  if (tried == 1) return "Cannot open " + NameIn(failed[0].path) + ": " + failed[0].why;
  std::string text =
      GroupDigits(failed.size()) + " of " + GroupDigits(tried) + " files did not open: ";
  for (std::size_t i = 0; i < failed.size() && i < kNamed; ++i) {
    if (i > 0) text += ", ";
    text += NameIn(failed[i].path) + " (" + failed[i].why + ")";
  }
  if (failed.size() > kNamed) text += " and " + GroupDigits(failed.size() - kNamed) + " more";
  return text;
}

std::string FailedDetails(const std::vector<FailedOpen>& failed) {
  std::string text;
  for (const FailedOpen& each : failed) {
    if (!text.empty()) text += "\n";
    text += each.path + ": " + each.why;
  }
  return text;
}
