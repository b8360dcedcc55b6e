#include "shell/beside/stored_beside.h"

#include "settings/registry.h"

namespace {

constexpr unsigned kLargestPx = 32767;  // no window system accepts more

std::string Key() {
  return std::string(kRegTraceView) + "\\Beside";
}

const char* ExtentName(BesideEdge edge) {
  return edge == BesideEdge::Right ? "Width" : "Height";
}

void Store(const std::string& name, unsigned number) {
  if (NtRegGet(HKEY_CURRENT_USER, Key(), name, 0U) != number)
    NtRegPut(HKEY_CURRENT_USER, Key(), name, number);
}

}  // namespace

BesideEdge StoredBesideEdge() {
  return NtRegGet(HKEY_CURRENT_USER, Key(), "Right", 0U) == 1 ? BesideEdge::Right
                                                              : BesideEdge::Below;
}

void StoreBesideEdge(BesideEdge edge) {
  Store("Right", edge == BesideEdge::Right ? 1 : 0);
}

int StoredBesideExtent(BesideEdge edge) {
  const unsigned stored = NtRegGet(HKEY_CURRENT_USER, Key(), ExtentName(edge), 0U);
  return stored <= kLargestPx ? static_cast<int>(stored) : 0;
}

void StoreBesideExtent(BesideEdge edge, int extentPx) {
  if (extentPx > 0) Store(ExtentName(edge), static_cast<unsigned>(extentPx));
}

bool IsBesideOpen(const std::string& pane) {
  return NtRegGet(HKEY_CURRENT_USER, Key(), pane, 0U) == 1;
}

void StoreBesideOpen(const std::string& pane, bool open) {
  Store(pane, open ? 1 : 0);
}
