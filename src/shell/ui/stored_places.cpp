#include "shell/ui/stored_places.h"

#include <sstream>

#include "settings/registry.h"

namespace {

constexpr int kLargestPlacePx = 32767;

std::string DialogsKey() {
  return std::string(kRegSettings) + "\\Dialogs";
}

bool IsPossible(int px) {
  return px > 0 && px <= kLargestPlacePx;
}

}  // namespace

std::optional<QRect> StoredPlaces::PlaceOf(const std::string& dialog) {
  std::istringstream stored(NtRegGet(HKEY_CURRENT_USER, DialogsKey(), dialog, ""));
  int x = 0, y = 0, width = 0, height = 0;
  if (!(stored >> x >> y >> width >> height)) return std::nullopt;
  if (!IsPossible(width) || !IsPossible(height)) return std::nullopt;
  const auto isOnADesk = [](int px) { return px >= -kLargestPlacePx && px <= kLargestPlacePx; };
  if (!isOnADesk(x) || !isOnADesk(y)) return std::nullopt;
  return QRect(x, y, width, height);
}

void StoredPlaces::Keep(const std::string& dialog, const QRect& place) {
  std::ostringstream text;
  text << place.x() << ' ' << place.y() << ' ' << place.width() << ' ' << place.height();
  NtRegPut(HKEY_CURRENT_USER, DialogsKey(), dialog, text.str());
}
