// The options that the program itself handles; the application gets the rest.
#pragma once

#include <QSize>
#include <string>
#include <vector>

struct ProgramOptions {
  bool help = false;
  bool version = false;
  bool dark = false;
  std::string settings;  // the settings file, empty for the user's
  std::string render;    // the picture to write, empty to run as usual
  std::string monitor;   // the machine whose traces to show, empty for none
  QSize size;            // of the main window; empty for the stored one
  std::vector<std::string> rest;
  std::string wrong;  // the error message; empty if there is none
};

// `arguments` without the program's name. Unknown options go to the rest.
ProgramOptions ParseProgramOptions(const std::vector<std::string>& arguments);

// The error in a rest from which the window system has removed its own options: an unknown option,
// a second file. Empty if there is none.
std::string WrongRest(const std::vector<std::string>& rest);
// The error of a settings file, which need not exist yet; empty if there is none.
std::string UnusableSettings(const std::string& path);

const char* UsageText();

// Where the names of stacks are looked for: the folders of the settings before those of the
// environment.
std::vector<std::string> SymbolFolders();
