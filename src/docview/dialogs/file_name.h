// The file name that a save dialog's answer means: the default extension is added to every name
// that does not end in an extension of the dialog.
//
// Shape    A filter's extensions are the parts of its patterns after the "*"; a pattern "*" means
//          any file. The case of A to Z is ignored.
// Errors   None.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <string>

#include "docview/host.h"

// `name` as the user left it, with or without a folder; `filter` is the index of the chosen filter.
// A dot in a name does not make an extension ("Traces sent to 127.0.0.1"). Only if the filter
// accepts any file, the part after the last dot counts as an extension if it begins with a letter.
std::string WithDefaultExtension(const std::string& name, const FileDialogRequest& request,
                                 std::size_t filter);
