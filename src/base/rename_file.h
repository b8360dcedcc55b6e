// Renames a file without replacing another file.
//
// Errors   False with errno set; then nothing has been renamed.
// Threads  Any.
#pragma once

#include <string>

// Fails with EEXIST when the new name exists.
bool RenameWithoutReplacing(const std::string& from, const std::string& to);

// The same by a second link, for file systems whose rename has no such option. For a moment the
// file has both names. Not for folders.
bool RenameByLink(const std::string& from, const std::string& to);
