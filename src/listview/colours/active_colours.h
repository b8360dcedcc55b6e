// The colour rules that all lists paint by, and the sets of rules that the settings keep.
//
// Shape    One set is in use, or none. Saved sets have names of one line.
// Errors   What cannot be read is left out. Of a set that is saved: false and the reason.
// Threads  Interface thread. Two running programs may share the settings.
#pragma once

#include <string>
#include <vector>

#include "where/colours/colour_program.h"

constexpr std::size_t kSavedColourSets = 50, kColourSetsBytes = std::size_t{2} << 20;

struct UsedColours {
  bool shown = false;
  ColourRules rules;
};
UsedColours ReadUsedColours();
// Keeps them, and lists paint by them from their next painting on. They may be too many to be
// kept.
bool UseColours(const UsedColours& colours, std::string* why);

// Counts the calls of UseColours that succeeded.
unsigned ColourChoices();

// What lists paint by; null: no rules are shown.
const ColourProgramPtr& ActiveColours();
// From the settings. Called by the application's start.
void ReadActiveColours();

struct SavedColours {
  std::string name;
  ColourRules rules;
};
// By name, without regard to capitals.
std::vector<SavedColours> ReadSavedColours();
// In place of one with this name.
bool SaveColours(std::string name, const ColourRules& rules, std::string* why);
void DeleteSavedColours(const std::string& name);
