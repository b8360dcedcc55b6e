// The views of files and monitors that come back, and the profiles of the user: where they are
// kept.
//
// Where    A file for each: views below $XDG_STATE_HOME/tessera/views, profiles below
//          $XDG_CONFIG_HOME/tessera/profiles. With a settings file of the user's choice beside it,
//          as FILE.views and FILE.profiles.
// Errors   False or nothing, and the reason. A view that cannot be read is put aside, so that it is
//          told about once; one of another source, whose print is the same by chance, counts as
//          none.
// Threads  Interface thread. Two running programs may share the folders: the last one that writes a
//          view or a profile wins, the others stay.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "notes/new_notes.h"
#include "views/view_text.h"

constexpr std::size_t kStoredViewsMax = 200, kProfilesMax = 100;

// Views come back unless the user has switched that off.
bool AreViewsRemembered();
void RememberViews(bool on);

// `source` is the path of a file, or "monitor:" and a machine.
std::optional<StoredView> ReadStoredView(const std::string& source, std::string* why);
bool StoreView(const StoredView& view, std::string* why, const NotesSteps& steps = {});

// By name, without regard to capitals.
std::vector<Profile> ReadProfiles();
std::optional<Profile> FindProfile(const std::string& name);
// In place of one with this name.
bool KeepProfile(Profile profile, std::string* why);
void DeleteProfile(const std::string& name);
bool RenameProfile(const std::string& from, const std::string& to, std::string* why);
