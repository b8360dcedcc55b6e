// The settings file on the disk: always read and replaced as a whole.
//
// Errors   A missing file reads as empty. A file that is not regular, cannot be read, or is longer
//          than a settings file can be is not touched: it reads as empty and is not replaced.
// Threads  Any; several programs may change the file at once.
#pragma once

#include <functional>
#include <optional>
#include <string>

std::optional<std::string> ReadSettingsFile(const std::string& path);

// Takes the lock beside the file, reads the file, and replaces it by the result of `change`. It
// does so by a rename, so that a reader sees either the old text or the new one. Makes the folder
// if it is missing. False on failure; the file is then as it was.
bool ChangeSettingsFile(const std::string& path,
                        const std::function<std::string(const std::string&)>& change);
