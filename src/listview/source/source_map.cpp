#include "listview/source/source_map.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "base/text.h"
#include "listview/source/locate_wait.h"

std::vector<SourcePathMapping> g_sourceMap;

namespace {

constexpr char kLocateTitle[] = "Locate source file";

bool MayRead(const std::string& path) {
  return access(path.c_str(), R_OK) == 0;
}

std::string WithSlashes(std::string_view path) {
  std::string slashed(path);
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  return slashed;
}

// The last separator of text[0, end); npos when there is none.
std::size_t LastSeparator(std::string_view text, std::size_t end) {
  return text.substr(0, end).find_last_of("\\/:");
}

// Compares "\" and "/" as equal.
bool SameTail(std::string_view a, std::string_view b) {
  return a.size() == b.size() && CompareIgnoringCase(WithSlashes(a), WithSlashes(b)) == 0;
}

enum class Agreement { Whole, Tail, Nothing };

// How far the paths agree from their right ends. Tail: `i` and `j` are the indexes of the
// separators at which the common tails begin. Nothing: not even the file names agree.
Agreement CompareFromTheRight(std::string_view recorded, std::string_view located, std::size_t& i,
                              std::size_t& j) {
  i = recorded.size();
  j = located.size();
  while (i != 0 && j != 0) {
    const std::size_t p = LastSeparator(recorded, i);
    const std::size_t q = LastSeparator(located, j);
    if (p == recorded.npos || q == located.npos) {
      // The start of a path counts as a difference, except for two equal paths.
      if (i == recorded.size() || SameTail(recorded, located)) return Agreement::Whole;
      return Agreement::Tail;
    }
    if (!SameTail(recorded.substr(p), located.substr(q)))
      return i == recorded.size() ? Agreement::Nothing : Agreement::Tail;
    i = p;
    j = q;
  }
  return Agreement::Whole;
}

}  // namespace

std::string FindMappedPath(const std::string& path) {
  for (const SourcePathMapping& mapping : g_sourceMap) {
    const std::size_t length = mapping.recordedPrefix.size();
    const std::string_view whole(path);
    if (CompareIgnoringCase(whole.substr(0, length), mapping.recordedPrefix) != 0) continue;
    const std::string_view rest = whole.substr(length);
    std::string local = mapping.localPrefix;
    local += rest;
    if (MayRead(local)) return local;
    local = mapping.localPrefix + WithSlashes(rest);
    if (MayRead(local)) return local;
  }
  return {};
}

std::string ResolveSourcePath(Host& host, const std::string& path) {
  std::string candidate = FindMappedPath(path);
  if (!candidate.empty()) return candidate;
  FileDialogRequest request;
  request.title = kLocateTitle;
  request.suggestedName = path;
  request.filters = {{"Source Files (*.c;*.cpp;*.cxx)", "*.c; *.cpp; *.cxx"},
                     {"Header Files (*.h;*.hxx)", "*.h; *.hxx"},
                     {"All Files (*.*)", "*"}};
  // The dialog shows the name's folder only if that exists here.
  request.note = {LocateWait::kRecordedLabel, path};
  const std::optional<FileDialogAnswer> answer = host.RunFileDialog(request);
  if (!answer || !LearnPathMapping(host, path, answer->path)) return {};
  return answer->path;
}

bool LearnPathMapping(Host& host, const std::string& recorded, const std::string& located) {
  std::size_t i = 0, j = 0;
  switch (CompareFromTheRight(recorded, located, i, j)) {
    case Agreement::Whole:
      return true;
    case Agreement::Tail:
      g_sourceMap.push_back({recorded.substr(0, i + 1), located.substr(0, j + 1)});
      return true;
    case Agreement::Nothing:
      break;
  }
  // Kept: for files of different names the comparison does not end. Safe: the windows work, and the
  // user can end it.
  LocateWait wait(host, recorded, located);
  wait.DoModal();
  return false;
}
