// View states as JSON: the views of files that come back, and profiles. docs/formats.md has the
// form.
//
// Errors   A text is read whole or not at all; false or nothing, and the reason. Members that are
//          not known are left out, a part that breaks its bounds or has the wrong kind refuses the
//          text.
// Threads  Pure, but for LoadProfile and SaveProfile.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "notes/fingerprint.h"
#include "views/view_state.h"

constexpr std::size_t kViewBytesMax = std::size_t{2} << 20;

// The view of a file or of a monitor, as it was when its window was closed.
struct StoredView {
  std::string source = {};  // the path of the file, or "monitor:" and the machine
  FilePrint file = {};      // of a monitor: nothing
  ViewState state = {};
  bool onTrial = false;       // it was being applied when this was written (view_trial.h)
  std::uint64_t program = 0;  // the process that did so; 0: not known
  bool operator==(const StoredView&) const = default;
};

struct Profile {
  std::string name = {};  // one line, not empty
  ViewState state = {};   // without a row
  bool operator==(const Profile&) const = default;
};

// False also where the text would be too long to be read again.
bool ViewText(const StoredView& view, std::string& text, std::string* why);
bool ProfileText(const Profile& profile, std::string& text, std::string* why);
std::optional<StoredView> ReadView(std::string_view text, std::string* why);
std::optional<Profile> ReadProfile(std::string_view text, std::string* why);

// The reason begins with the path.
std::optional<Profile> LoadProfile(const std::string& path, std::string* why);
// A new file that gets its name when it is complete.
bool SaveProfile(const std::string& path, const Profile& profile, std::string* why);

// Well-formed, without line ends and blanks around it; empty: no name is left.
std::string CleanViewName(std::string name);
