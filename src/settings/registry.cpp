#include "settings/registry.h"

#include <errno.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string_view>

#include "settings/settings_file.h"
#include "settings/settings_text.h"

namespace {

std::string& ChosenFile() {
  static std::string path;
  return path;
}

// Only an absolute path counts, so that the store does not depend on the current folder.
std::string AbsoluteFromEnvironment(const char* name) {
  const char* const value = getenv(name);
  return value && value[0] == '/' ? value : "";
}

std::string HomeFolder() {
  std::string home = AbsoluteFromEnvironment("HOME");
  if (!home.empty()) return home;
  const passwd* const user = getpwuid(getuid());
  return user && user->pw_dir ? user->pw_dir : "";
}

std::string DefaultFile() {
  std::string folder = AbsoluteFromEnvironment("XDG_CONFIG_HOME");
  if (folder.empty()) folder = HomeFolder() + "/.config";
  return folder + "/tessera/settings.ini";
}

// Reads the file at each call: another running program may have changed it.
template <class Value, class Read>
std::optional<Value> Get(const std::string& key, const std::string& name, Read read, int* error) {
  std::optional<Value> result;
  const auto file = ReadSettingsFile(SettingsFile());
  if (const auto value = file ? FindSetting(*file, key, name) : std::nullopt) result = read(*value);
  if (error) *error = result ? 0 : ENOENT;
  return result;
}

void Put(const std::string& key, const std::string& name, const std::string& value) {
  ChangeSettingsFile(SettingsFile(),
                     [&](const std::string& file) { return WithSetting(file, key, name, value); });
}

}  // namespace

unsigned NtRegGet(RegHive, const std::string& key, const std::string& name, unsigned fallback,
                  int* error) {
  return Get<std::uint32_t>(key, name, ReadNumberSetting, error).value_or(fallback);
}

std::string NtRegGet(RegHive, const std::string& key, const std::string& name,
                     const std::string& fallback, int* error) {
  return Get<std::string>(key, name, ReadTextSetting, error).value_or(fallback);
}

void NtRegGetBuf(RegHive, const std::string& key, const std::string& name, void* to,
                 const void* fallback, std::size_t size, int* error) {
  const auto ofSize = [size](std::string_view value) {
    auto bytes = ReadBytesSetting(value);
    if (bytes && bytes->size() != size) bytes.reset();
    return bytes;
  };
  const auto stored = Get<std::string>(key, name, ofSize, error);
  // The destination may be the block of defaults itself.
  if (size > 0) std::memmove(to, stored ? stored->data() : fallback, size);
}

void NtRegPut(RegHive, const std::string& key, const std::string& name, unsigned value) {
  Put(key, name, NumberSetting(value));
}

void NtRegPut(RegHive, const std::string& key, const std::string& name, const std::string& value) {
  Put(key, name, TextSetting(value));
}

void NtRegPutBuf(RegHive, const std::string& key, const std::string& name, const void* bytes,
                 std::size_t size) {
  Put(key, name, BytesSetting({static_cast<const char*>(bytes), size}));
}

void SetSettingsFile(const std::string& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  ChosenFile() = path.empty() || error ? path : absolute.string();
}

std::string SettingsFile() {
  return ChosenFile().empty() ? DefaultFile() : ChosenFile();
}

bool IsSettingsFileChosen() {
  return !ChosenFile().empty();
}
