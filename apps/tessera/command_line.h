// The options that the program itself takes; the application gets the rest.
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
  std::string wrong;  // not empty: what is wrong with the arguments
};

// `arguments` without the program's name. Options that are not known go to the rest.
ProgramOptions ParseProgramOptions(const std::vector<std::string>& arguments);

// What is wrong with a rest from which the window system has taken its own options: an option that
// nobody knows, a second file. Empty when it is good.
std::string WrongRest(const std::vector<std::string>& rest);
// What is wrong with a settings file, one that may not exist yet; empty when it is good.
std::string UnusableSettings(const std::string& path);

const char* UsageText();
