#include "shell/filterline/stored_filters.h"

#include <algorithm>
#include <string_view>

#include "base/fail_with.h"
#include "base/text.h"
#include "settings/registry.h"

namespace {

constexpr const char *kShown = "Shown", *kRecent = "Recent", *kSaved = "Saved";

std::string Key() {
  return std::string(kRegTraceView) + "\\FilterText";
}

// Each of the two lists is one value of lines, so that a change writes the settings once.
std::vector<std::string> ReadLines(const char* name) {
  const std::string all = NtRegGet(HKEY_CURRENT_USER, Key(), name, "");
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < all.size();) {
    const std::size_t end = std::min(all.find('\n', from), all.size());
    if (end > from) lines.push_back(all.substr(from, end - from));
    from = end + 1;
  }
  return lines;
}

void WriteLines(const char* name, const std::vector<std::string>& lines) {
  std::string all;
  for (const std::string& line : lines) all += line + '\n';
  NtRegPut(HKEY_CURRENT_USER, Key(), name, all);
}

bool IsStored(std::string_view text) {
  return !text.empty() && text.size() <= kStoredFilterBytes &&
         text.find('\n') == std::string_view::npos;
}

void WriteSaved(const std::vector<SavedFilter>& filters) {
  std::vector<std::string> lines;
  for (const SavedFilter& filter : filters) lines.push_back(filter.name + '\t' + filter.text);
  WriteLines(kSaved, lines);
}

void Drop(std::vector<SavedFilter>& filters, const std::string& name) {
  std::erase_if(filters, [&](const SavedFilter& filter) {
    return CompareIgnoringCase(filter.name, name) == 0;
  });
}

// Tabs and line ends separate the stored names.
std::string CleanName(std::string name) {
  for (char& c : name) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  const std::size_t first = name.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

}  // namespace

bool IsFilterLineShown() {
  return NtRegGet(HKEY_CURRENT_USER, Key(), kShown, 0U) == 1;
}

void StoreFilterLineShown(bool shown) {
  if (shown != IsFilterLineShown()) NtRegPut(HKEY_CURRENT_USER, Key(), kShown, shown ? 1U : 0U);
}

std::vector<std::string> RecentFilters() {
  std::vector<std::string> texts = ReadLines(kRecent);
  if (texts.size() > kRecentFilters) texts.resize(kRecentFilters);
  return texts;
}

void NoteRecentFilter(const std::string& text) {
  if (!IsStored(text)) return;
  std::vector<std::string> texts = RecentFilters();
  if (!texts.empty() && texts.front() == text) return;
  std::erase(texts, text);
  texts.insert(texts.begin(), text);
  if (texts.size() > kRecentFilters) texts.resize(kRecentFilters);
  WriteLines(kRecent, texts);
}

std::vector<SavedFilter> ReadSavedFilters() {
  std::vector<SavedFilter> filters;
  for (const std::string& line : ReadLines(kSaved)) {
    const std::size_t tab = line.find('\t');
    if (tab != std::string::npos && tab > 0 && filters.size() < kSavedFilters)
      filters.push_back({line.substr(0, tab), line.substr(tab + 1)});
  }
  std::ranges::stable_sort(filters, [](const SavedFilter& a, const SavedFilter& b) {
    return CompareIgnoringCase(a.name, b.name) < 0;
  });
  return filters;
}

bool SaveFilter(std::string name, const std::string& text, std::string* why) {
  name = CleanName(std::move(name));
  if (name.empty()) return FailWith(why, "A saved filter needs a name.");
  if (!IsStored(text) || name.size() > kStoredFilterBytes)
    return FailWith(why, "This text is too long to be saved.");
  std::vector<SavedFilter> filters = ReadSavedFilters();
  Drop(filters, name);
  if (filters.size() >= kSavedFilters)
    return FailWith(why, "There are 100 saved filters. Delete one of them first.");
  filters.push_back({std::move(name), text});
  WriteSaved(filters);
  return true;
}

void DeleteSavedFilter(const std::string& name) {
  std::vector<SavedFilter> filters = ReadSavedFilters();
  Drop(filters, name);
  WriteSaved(filters);
}
