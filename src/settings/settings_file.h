// The settings file on the disk: read whole, replaced whole.
//
// Errors   A file that is missing reads as empty. One that is no regular file, cannot be read, or
//          is longer than any of ours is not touched: it reads as nothing and is not replaced.
// Threads  Any; several programs may change the file at once.
#pragma once

#include <functional>
#include <optional>
#include <string>

std::optional<std::string> ReadSettingsFile(const std::string& path);

// Takes the lock beside the file, reads the file, and replaces it by what `change` makes of it, by
// a rename, so that a reader sees the old text or the new one. Makes the folder where it is
// missing. False when it could not be done; the file is then as it was.
bool ChangeSettingsFile(const std::string& path,
                        const std::function<std::string(const std::string&)>& change);
