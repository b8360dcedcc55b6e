// The location of source files whose recorded paths do not exist here. When the user locates a
// file, the pair of leading parts is stored, so that other files of the same tree open without a
// question.
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

// Of this run: entries are only added, at the end.
extern std::vector<SourcePathMapping> g_sourceMap;

// The first mapping, in order, whose file can be read. The rest of the path is also tried with "/"
// in place of "\".
std::string FindMappedPath(const std::string& path);

// The local file for the recorded path: by a mapping, else by asking the user, which adds a
// mapping.
std::string ResolveSourcePath(Host& host, const std::string& path);

// Stores by which leading parts the two paths differ. With different file names it waits until the
// user cancels (see LocateWait), stores nothing and returns false; true otherwise.
bool LearnPathMapping(Host& host, const std::string& recorded, const std::string& located);
