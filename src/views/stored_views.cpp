#include "views/stored_views.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "base/fail_with.h"
#include "base/text.h"
#include "settings/registry.h"
#include "views/kept_files.h"

namespace {

constexpr char kRemember[] = "Remember Views";

std::string HomeFolder() {
  const char* const home = std::getenv("HOME");
  return home && home[0] == '/' ? home : "";
}

std::string StateFolder() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  return (state && state[0] == '/' ? state : HomeFolder() + "/.local/state") + "/tessera";
}

std::string FolderOf(const char* name, const std::string& standard) {
  return IsSettingsFileChosen() ? SettingsFile() + "." + name : standard + "/" + name;
}

KeptFiles Views() {
  return {FolderOf("views", StateFolder()), kStoredViewsMax, kViewBytesMax};
}

// More than the user can have: none is ever removed to make room.
constexpr std::size_t kProfileFilesMax = 10 * kProfilesMax;

KeptFiles Profiles() {
  const std::string settings = SettingsFile();
  return {FolderOf("profiles", settings.substr(0, settings.rfind('/'))), kProfileFilesMax,
          kViewBytesMax};
}

std::string KeyOf(const std::string& name) {
  return ToLowerAscii(name);
}

bool IsNamed(const Profile& profile, const std::string& name) {
  return CompareIgnoringCase(profile.name, name) == 0;
}

struct StoredProfile {
  std::string path;
  Profile profile;
};

// By name, once each. A file that somebody has copied or edited may have any name; of several the
// one that this program wrote counts.
std::vector<StoredProfile> AllProfiles() {
  std::vector<StoredProfile> all;
  const KeptFiles files = Profiles();
  files.ForEach([&all](const std::string& path, const std::string& text) {
    if (auto profile = ReadProfile(text, nullptr)) all.push_back({path, std::move(*profile)});
  });
  const auto isOther = [&](const StoredProfile& each) {
    return each.path != files.PathOf(KeyOf(each.profile.name));
  };
  std::ranges::sort(all, [&](const StoredProfile& a, const StoredProfile& b) {
    const int order = CompareIgnoringCase(a.profile.name, b.profile.name);
    return order != 0 ? order < 0 : isOther(a) < isOther(b);
  });
  const auto isRepeat = [](const StoredProfile& a, const StoredProfile& b) {
    return IsNamed(a.profile, b.profile.name);
  };
  all.erase(std::unique(all.begin(), all.end(), isRepeat), all.end());
  return all;
}

bool Put(const Profile& profile, std::string* why) {
  std::string text;
  return ProfileText(profile, text, why) && Profiles().Write(KeyOf(profile.name), text, why);
}

// A profile whose name was edited may have the file of this one: it gets its own.
bool Write(const Profile& profile, std::string* why) {
  std::string text;
  Profiles().Read(KeyOf(profile.name), text, nullptr);
  const auto other = ReadProfile(text, nullptr);
  if (other && !IsNamed(*other, profile.name) && !Put(*other, why)) return false;
  return Put(profile, why);
}

bool TakeName(Profile& profile, const std::string& name, std::string* why) {
  profile.name = CleanViewName(name);
  if (profile.name.empty()) return FailWith(why, "A profile needs a name.");
  return profile.name.size() <= kViewNameBytes || FailWith(why, "This name is too long.");
}

}  // namespace

bool AreViewsRemembered() {
  return NtRegGet(HKEY_CURRENT_USER, kRegTraceView, kRemember, 1U) != 0;
}

void RememberViews(bool on) {
  if (on != AreViewsRemembered())
    NtRegPut(HKEY_CURRENT_USER, kRegTraceView, kRemember, on ? 1U : 0U);
}

std::optional<StoredView> ReadStoredView(const std::string& source, std::string* why) {
  const KeptFiles files = Views();
  std::string text, reason;
  const KeptFiles::Found found = files.Read(source, text, &reason);
  if (found == KeptFiles::Found::Nothing) return std::nullopt;
  std::optional<StoredView> view;
  if (found == KeptFiles::Found::Text) {
    view = ReadView(text, &reason);
    if (!view) reason.insert(0, files.PathOf(source) + ": ");
  }
  if (view && view->source == ReplaceMalformed(source)) {
    view->source = source;
    return view;
  }
  if (view) return std::nullopt;
  files.PutAside(source, text);
  return FailWith(why, reason, std::optional<StoredView>());
}

bool StoreView(const StoredView& view, std::string* why, const NotesSteps& steps) {
  std::string text;
  return ViewText(view, text, why) && Views().Write(view.source, text, why, steps);
}

// ---- profiles

std::vector<Profile> ReadProfiles() {
  std::vector<Profile> profiles;
  for (StoredProfile& each : AllProfiles()) profiles.push_back(std::move(each.profile));
  if (profiles.size() > kProfilesMax) profiles.resize(kProfilesMax);
  return profiles;
}

std::optional<Profile> FindProfile(const std::string& name) {
  const std::string clean = CleanViewName(name);
  std::string text;
  Profiles().Read(KeyOf(clean), text, nullptr);
  if (auto profile = ReadProfile(text, nullptr); profile && IsNamed(*profile, clean))
    return profile;
  for (StoredProfile& each : AllProfiles())
    if (IsNamed(each.profile, clean)) return std::move(each.profile);
  return std::nullopt;
}

bool KeepProfile(Profile profile, std::string* why) {
  if (!TakeName(profile, profile.name, why)) return false;
  if (!FindProfile(profile.name) && ReadProfiles().size() >= kProfilesMax)
    return FailWith(why, "There are 100 profiles. Delete one of them first.");
  return Write(profile, why);
}

void DeleteProfile(const std::string& name) {
  const std::string clean = CleanViewName(name);
  Profiles().ForEach([&clean](const std::string& path, const std::string& text) {
    const auto profile = ReadProfile(text, nullptr);
    if (profile && IsNamed(*profile, clean)) unlink(path.c_str());
  });
}

bool RenameProfile(const std::string& from, const std::string& to, std::string* why) {
  std::optional<Profile> profile = FindProfile(from);
  if (!profile) return FailWith(why, "There is no profile of this name.");
  const bool same = CompareIgnoringCase(CleanViewName(from), CleanViewName(to)) == 0;
  if (!same && FindProfile(to)) return FailWith(why, "There is a profile of this name already.");
  // The new one first: a program that ends in between leaves both.
  if (!TakeName(*profile, to, why) || !Write(*profile, why)) return false;
  if (!same) DeleteProfile(from);
  return true;
}
