#include "docview/dialogs/file_name.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace {

constexpr std::string_view kAnyFile = "*";

// Splits "*.c; *.cpp" into "*.c" and "*.cpp".
std::vector<std::string_view> PatternsOf(const FileFilter& filter) {
  std::vector<std::string_view> patterns;
  for (std::string_view rest = filter.patterns; !rest.empty();) {
    const std::size_t end = rest.find_first_of("; ");
    if (end != 0) patterns.push_back(rest.substr(0, end));
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
  }
  return patterns;
}

bool EndsIn(std::string_view name, std::string_view extension) {
  return name.size() >= extension.size() && !extension.empty() &&
         CompareIgnoringCase(name.substr(name.size() - extension.size()), extension) == 0;
}

bool EndsInAnExtensionOf(std::string_view name, const FileDialogRequest& request) {
  if (EndsIn(name, request.defaultExtension)) return true;
  for (const FileFilter& filter : request.filters) {
    for (const std::string_view pattern : PatternsOf(filter))
      if (EndsIn(name, pattern.substr(1))) return true;
  }
  return false;
}

bool SeemsToHaveAnExtension(std::string_view name) {
  name.remove_prefix(name.rfind('/') + 1);  // without a folder that is 0
  const std::size_t dot = name.rfind('.');
  return dot != name.npos && dot + 1 < name.size() &&
         std::isalpha(static_cast<unsigned char>(name[dot + 1]));
}

}  // namespace

std::string WithDefaultExtension(const std::string& name, const FileDialogRequest& request,
                                 std::size_t filter) {
  if (name.empty() || request.defaultExtension.empty() || EndsInAnExtensionOf(name, request))
    return name;
  if (filter >= request.filters.size()) return name + request.defaultExtension;
  const std::vector<std::string_view> patterns = PatternsOf(request.filters[filter]);
  const bool anyFile = std::find(patterns.begin(), patterns.end(), kAnyFile) != patterns.end();
  if (anyFile && SeemsToHaveAnExtension(name)) return name;
  if (anyFile || patterns.empty()) return name + request.defaultExtension;
  return name + std::string(patterns.front().substr(1));
}
