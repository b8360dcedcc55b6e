// What the settings keep of filter texts: those that were applied last, those that the user saved,
// and whether new windows show the line.
//
// Shape    Texts are one line each. A text of more than kStoredFilterBytes is not kept.
// Errors   What cannot be read is left out.
// Threads  Interface thread. Two running programs may share the settings.
#pragma once

#include <string>
#include <vector>

constexpr std::size_t kRecentFilters = 20, kSavedFilters = 100, kStoredFilterBytes = 4096;

bool IsFilterLineShown();
void StoreFilterLineShown(bool shown);

// The newest first.
std::vector<std::string> RecentFilters();
// It becomes the newest, and is there once.
void NoteRecentFilter(const std::string& text);

struct SavedFilter {
  std::string name, text;
};
// By name, without regard to capitals.
std::vector<SavedFilter> ReadSavedFilters();
// In place of one with this name. Errors: false and the reason.
bool SaveFilter(std::string name, const std::string& text, std::string* why = nullptr);
void DeleteSavedFilter(const std::string& name);
