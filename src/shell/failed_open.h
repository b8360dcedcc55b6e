// The messages about files that did not open.
//
// Shape    A line for the status bar, and a text with all paths for a tool tip or a box.
// Threads  Any; the files are checked again.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct FailedOpen {
  std::string path;
  std::string why;
};

// "The file is empty", "No such file or directory"; empty when the file can be read.
std::string WhyUnreadable(const std::string& path);
// For a trace file that can be read: "Invalid format." or "not converted".
std::string WhyRefused(const std::string& path);

// "Cannot open web.trc: The file is empty"; for several files "2 of 5 files did not open: web.trc
// (The file is empty), db.trc (Invalid format.)". Empty when none failed.
std::string FailedText(const std::vector<FailedOpen>& failed, std::size_t tried);
// One line for each file, with its whole path.
std::string FailedDetails(const std::vector<FailedOpen>& failed);
