// Gives a notes file its new content, in one step.
//
// The text is written to a new file in the same folder, ".NAME.PID.part", and synced; then it is
// renamed to its name, and the folder is synced. So a process that is killed, or a machine that
// stops, at any byte leaves the old file or the new one. A killed process may leave its part.
//
// Rights   Those of the trace file, without those to execute; its group too, where that is allowed.
// Links    What has the name must be a regular file, or nothing. A symbolic link is refused, as it
//          could lead anywhere. The folder is that of the trace file's path as it was given.
// Errors   False and a reason with the path. Nothing has changed then, and no part is left.
// Threads  One for a path.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

struct NotesSteps {
  std::size_t pieceBytes = 256 * 1024;  // at a time
  std::function<void()> before;         // each change of the disk: for tests
};

bool ReplaceNotes(const std::string& path, const std::string& tracePath, std::string_view text,
                  std::string* why, const NotesSteps& steps = {});
