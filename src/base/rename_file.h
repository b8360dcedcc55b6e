// Giving a file another name without taking that name from another file.
//
// Errors   False with errno set; then nothing has been renamed.
// Threads  Any.
#pragma once

#include <string>

// Fails with EEXIST when there is anything under the new name, and never replaces it.
bool RenameWithoutReplacing(const std::string& from, const std::string& to);

// The same by a second link, for file systems whose rename cannot be told not to replace. For a
// moment the file has both names. Not for folders.
bool RenameByLink(const std::string& from, const std::string& to);
