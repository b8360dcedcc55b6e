#include "shell/sizes/stored_size.h"

#include "settings/registry.h"

namespace {

constexpr char kWidth[] = "Window Width";
constexpr char kHeight[] = "Window Height";
constexpr char kMaximised[] = "Window Maximised";
constexpr unsigned kLargestPx = 32767;  // no window system accepts more

void ReadExtent(const std::string& key, const char* name, int& extentPx) {
  const unsigned stored = NtRegGet(HKEY_CURRENT_USER, key, name, static_cast<unsigned>(extentPx));
  if (stored > 0 && stored <= kLargestPx) extentPx = static_cast<int>(stored);
}

// Dragging a border calls this many times: an unchanged value is not written again.
void StoreNumber(const std::string& key, const char* name, unsigned number) {
  if (NtRegGet(HKEY_CURRENT_USER, key, name, 0U) != number)
    NtRegPut(HKEY_CURRENT_USER, key, name, number);
}

}  // namespace

void ReadWindowSize(const std::string& key, int& widthPx, int& heightPx) {
  ReadExtent(key, kWidth, widthPx);
  ReadExtent(key, kHeight, heightPx);
}

void StoreWindowSize(const std::string& key, SizeType type, int widthPx, int heightPx) {
  if (type != SizeType::Restored || widthPx <= 0 || heightPx <= 0) return;
  StoreNumber(key, kWidth, static_cast<unsigned>(widthPx));
  StoreNumber(key, kHeight, static_cast<unsigned>(heightPx));
}

bool ReadWindowMaximised(const std::string& key) {
  return NtRegGet(HKEY_CURRENT_USER, key, kMaximised, 0U) == 1;
}

void StoreWindowMaximised(const std::string& key, SizeType type) {
  if (type != SizeType::Minimised) StoreNumber(key, kMaximised, type == SizeType::Maximised);
}
