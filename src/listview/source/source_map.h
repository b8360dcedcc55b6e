// Where the source files lie whose recorded paths do not exist here: what the user once located is
// learned as a pair of leading parts, so that other files of the same tree open without a question.
//
// Shape    A separator is "\", "/" or ":", and a prefix ends with one. Capitals A to Z count as
//          small letters.
// Errors   An empty path: not found, or cancelled.
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

#include "base/quor_str.h"
#include "docview/host.h"

struct SourcePathMapping {
  QuorStr::String_t recordedPrefix;
  QuorStr::String_t localPrefix;
};

// Of this run: only ever added to, at the end.
extern std::vector<SourcePathMapping> g_sourceMap;

// The first mapping, in order, whose file can be read; the rest of the path is also tried with "/"
// for "\".
std::string FindMappedPath(const std::string& path);

// The file that stands here for the recorded path: by a mapping, else by asking the user, which
// teaches a mapping.
std::string ResolveSourcePath(Host& host, const std::string& path);

// Notes by which leading parts the two paths differ. With different file names it waits until the
// user cancels (see LocateWait), adds nothing and gives false; true otherwise.
bool LearnPathMapping(Host& host, const std::string& recorded, const std::string& located);
