#include "config/document/app_names.h"

#include "base/text.h"

namespace {

constexpr std::size_t kNamed = 3, kNameBytes = 40;

std::string ShortName(const std::string& app) {
  const std::string_view cut = CutUtf8(app, kNameBytes);
  std::string name = _UTF2MBS(std::string(cut)) + (cut.size() < app.size() ? "..." : "");
  for (char& byte : name)
    if (static_cast<unsigned char>(byte) < ' ') byte = ' ';
  return name;
}

}  // namespace

std::string AppNames(const std::set<std::string>& apps) {
  std::string names;
  std::size_t named = 0;
  for (const std::string& app : apps) {
    if (named == kNamed) return names + " and " + GroupDigits(apps.size() - kNamed) + " more";
    names += (named++ == 0 ? "" : ", ") + ShortName(app);
  }
  return names;
}
