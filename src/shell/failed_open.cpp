#include "shell/failed_open.h"

#include <filesystem>
#include <fstream>

#include "base/mapped_file.h"
#include "base/text.h"
#include "config/tcf/tcf_read.h"
#include "records/trc_walk.h"

namespace {

constexpr std::size_t kNamed = 3;  // the rest is in the details

std::string NameIn(const std::string& path) {
  const std::string name = std::filesystem::path(path).filename().string();
  return name.empty() ? path : name;
}

bool IsConfiguration(const std::string& path) {
  return CompareIgnoringCase(std::filesystem::path(path).extension().string(), ".tcf") == 0;
}

// Reads the lines without doing anything.
class TcfCheck final : public TcfHandler {
 public:
  bool OnApp(const std::string&) override { return true; }
  bool OnSink(unsigned char, const std::string&, const std::string&) override { return true; }
  bool OnTrace(const std::string&, const std::string&, unsigned short) override { return true; }
};

}  // namespace

std::string WhyUnreadable(const std::string& path) {
  std::string why;
  return MappedFile::Open(path, &why) ? std::string() : why;
}

std::string BadLineOf(const std::string& path) {
  if (!IsConfiguration(path)) return {};
  std::ifstream in(path, std::ios::binary);
  TcfCheck check;
  TcfFault fault;
  if (ReadTcf(in, check, &fault) != TcfEnd::BadLine) return {};
  return "line " + GroupDigits(fault.line) + ": " + fault.why;
}

std::string WhyRefused(const std::string& path) {
  if (IsConfiguration(path)) {
    const std::string badLine = BadLineOf(path);
    return badLine.empty() ? "not opened" : badLine;
  }
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
