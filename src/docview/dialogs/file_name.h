// The name under which a save dialog's file is written: the default extension belongs to every name
// that does not end in an extension of the dialog's.
//
// Shape    A filter's extensions are what its patterns say behind their "*"; a pattern "*" is any
//          file. Letters A to Z count as small ones.
// Errors   None.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <string>

#include "docview/host.h"

// `name` as the person left it, with or without a folder; `filter` is the place of the filter
// chosen. A dot in a name makes no extension by itself ("Traces sent to 127.0.0.1"): only where the
// filter takes any file, what follows the last dot and begins with a letter counts as one.
std::string WithDefaultExtension(const std::string& name, const FileDialogRequest& request,
                                 std::size_t filter);
