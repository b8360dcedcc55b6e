// The settings store: one file per user, with key paths and value names.
//
// Shape    An INI-style text file, a section per key path; numbers decimal, blocks of bytes as
//          hexadecimal digits, texts escaped. $XDG_CONFIG_HOME/tessera/settings.ini unless
//          SetSettingsFile says otherwise.
// Errors   A value that is missing, of another kind, or of another size reads as its default. A
//          value that cannot be written is lost without a message.
// Threads  Interface thread. Two running programs may share the file: each write takes a lock,
//          reads the file again and changes its one value.
#pragma once

#include <cstddef>
#include <string>

// The only hive: the user's.
enum class RegHive { CurrentUser };
constexpr RegHive HKEY_CURRENT_USER = RegHive::CurrentUser;

// The program's own keys.
inline constexpr char kRegProgram[] = "Software\\Zentara\\QuorTrace\\Tessera";
inline constexpr char kRegSettings[] = "Software\\Zentara\\QuorTrace\\Tessera\\Settings";
inline constexpr char kRegTraceView[] =
    "Software\\Zentara\\QuorTrace\\Tessera\\Settings\\TraceView";
inline constexpr char kRegColumns[] =
    "Software\\Zentara\\QuorTrace\\Tessera\\Settings\\TraceView\\Columns";
inline constexpr char kRegConfigView[] =
    "Software\\Zentara\\QuorTrace\\Tessera\\Settings\\ConfigView";
inline constexpr char kRegWizard[] = "Software\\Zentara\\QuorTrace\\Tessera\\Settings\\Wizard";
inline constexpr char kRegRecentFiles[] = "Software\\Zentara\\QuorTrace\\Tessera\\Recent File List";

// *error, if given, is not 0 when the fallback was returned.
unsigned NtRegGet(RegHive hive, const std::string& key, const std::string& name, unsigned fallback,
                  int* error = nullptr);
std::string NtRegGet(RegHive hive, const std::string& key, const std::string& name,
                     const std::string& fallback, int* error = nullptr);
inline std::string NtRegGet(RegHive hive, const std::string& key, const std::string& name,
                            const char* fallback, int* error = nullptr) {
  return NtRegGet(hive, key, name, std::string(fallback), error);
}
// Fills `to` with `size` bytes, from a stored block of exactly that size or else from `fallback`.
void NtRegGetBuf(RegHive hive, const std::string& key, const std::string& name, void* to,
                 const void* fallback, std::size_t size, int* error = nullptr);

void NtRegPut(RegHive hive, const std::string& key, const std::string& name, unsigned value);
void NtRegPut(RegHive hive, const std::string& key, const std::string& name,
              const std::string& value);
inline void NtRegPut(RegHive hive, const std::string& key, const std::string& name,
                     const char* value) {
  NtRegPut(hive, key, name, std::string(value));
}
void NtRegPutBuf(RegHive hive, const std::string& key, const std::string& name, const void* bytes,
                 std::size_t size);

// Sets the path of the store, from the next operation on. For tests and --settings. Empty: the
// default path.
void SetSettingsFile(const std::string& path);
std::string SettingsFile();
// Is it another one than the default?
bool IsSettingsFileChosen();
