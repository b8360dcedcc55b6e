#include "import/fields/import_zone.h"

#include <stdlib.h>

#include <filesystem>

#include "base/fail_with.h"
#include "base/text.h"
#include "records/zone_offset.h"

namespace {

constexpr const char* kZoneFolder = "/usr/share/zoneinfo/";

bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

}  // namespace

std::int64_t ImportZone::ToUtc(std::int64_t clockSeconds) const {
  constexpr std::int64_t kDay = 86400;
  if (m_fixed) return clockSeconds - *m_fixed;
  const int before = ZoneOffsetSeconds(clockSeconds - kDay);
  if (ZoneOffsetSeconds(clockSeconds - before) == before) return clockSeconds - before;
  const int after = ZoneOffsetSeconds(clockSeconds + kDay);
  const bool meant = ZoneOffsetSeconds(clockSeconds - after) == after;
  return clockSeconds - (meant ? after : before);
}

std::optional<int> ReadOffset(std::string_view text) {
  for (const std::string_view utc : {"Z", "UTC", "GMT"})
    if (CompareIgnoringCase(text, utc) == 0) return 0;
  if (text.empty() || (text[0] != '+' && text[0] != '-')) return std::nullopt;
  int digits = 0, value = 0;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == ':' && i == 3) continue;
    if (!IsDigit(text[i]) || ++digits > 4) return std::nullopt;
    value = value * 10 + (text[i] - '0');
  }
  if (digits == 2 && text.size() == 3)
    value *= 100;
  else if (digits != 4)
    return std::nullopt;
  const int hours = value / 100, minutes = value % 100;
  if (hours > 15 || minutes > 59) return std::nullopt;
  const int seconds = hours * 3600 + minutes * 60;
  return text[0] == '-' ? -seconds : seconds;
}

std::optional<ImportZone> UseZone(const std::string& name, std::string* why) {
  if (name == "local") return ImportZone();
  if (const auto offset = ReadOffset(name)) return ImportZone(*offset);
  std::error_code error;
  const bool hidden = name.empty() || name[0] == '/' || name.find("..") != std::string::npos;
  if (hidden || !std::filesystem::is_regular_file(kZoneFolder + name, error))
    return FailWith(why, "there is no zone \"" + name + "\" in " + kZoneFolder, std::nullopt);
  setenv("TZ", name.c_str(), 1);
  ForgetZone();
  return ImportZone();
}
