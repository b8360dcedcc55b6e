#include "views/view_text.h"

#include <charconv>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"
#include "base/new_file.h"
#include "base/text.h"
#include "views/view_parts.h"

namespace {

using Json = nlohmann::json;

constexpr char kViewFormat[] = "tessera-view", kProfileFormat[] = "tessera-profile";
constexpr std::uint64_t kVersion = 1;
constexpr int kDepthMax = 8;

bool TextOf(const Json& json, std::string& text, std::string* why) {
  text = json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
  return text.size() <= kViewBytesMax || FailWith(why, "the view is too long to be kept");
}

// Nested deeper than any view is, it would take the stack of whoever walks it.
Json Parse(std::string_view text, std::string* why) {
  if (text.size() > kViewBytesMax) return FailWith(why, "longer than a view can be", Json());
  bool deep = false;
  const auto limit = [&deep](int depth, Json::parse_event_t, Json&) {
    deep = deep || depth > kDepthMax;
    return !deep;
  };
  Json json = Json::parse(text.begin(), text.end(), limit, false);
  if (deep) return FailWith(why, "nested too deeply", Json());
  if (json.is_discarded()) return FailWith(why, "no JSON", Json());
  return json;
}

bool IsOf(const Json& json, const char* format, std::string* why) {
  if (!json.is_object() || !json.contains("format") || json["format"] != format)
    return FailWith(why, std::string("not of the form ") + format);
  if (!json.contains("version") || json["version"] != kVersion)
    return FailWith(why, "of another version of the program");
  return true;
}

Json HeadOf(const char* format) {
  return {{"format", format}, {"version", kVersion}};
}

}  // namespace

bool ViewText(const StoredView& view, std::string& text, std::string* why) {
  Json json = HeadOf(kViewFormat);
  json["source"] = view.source;
  if (!view.file.heads.empty()) json["file"] = PartOfPrint(view.file);
  if (view.onTrial) json["on-trial"] = true;
  if (view.program != 0) json["program"] = view.program;
  return AddStateParts(json, view.state, why) && TextOf(json, text, why);
}

bool ProfileText(const Profile& profile, std::string& text, std::string* why) {
  Json json = HeadOf(kProfileFormat);
  json["name"] = profile.name;
  return AddStateParts(json, profile.state, why) && TextOf(json, text, why);
}

std::optional<StoredView> ReadView(std::string_view text, std::string* why) {
  std::string reason;
  const Json json = Parse(text, &reason);
  StoredView view;
  const bool read = reason.empty() && IsOf(json, kViewFormat, &reason) &&
                    ReadTextPart(json, "source", kViewFilterBytes, view.source, &reason) &&
                    ReadPrintPart(json, view.file, &reason) &&
                    ReadFlagPart(json, "on-trial", view.onTrial, &reason) &&
                    ReadNumberPart(json, "program", view.program, &reason) &&
                    ReadStateParts(json, view.state, &reason);
  if (!read) return FailWith(why, reason, std::optional<StoredView>());
  return view;
}

std::optional<Profile> ReadProfile(std::string_view text, std::string* why) {
  std::string reason;
  const Json json = Parse(text, &reason);
  Profile profile;
  const bool read = reason.empty() && IsOf(json, kProfileFormat, &reason) &&
                    ReadTextPart(json, "name", kViewNameBytes, profile.name, &reason) &&
                    ReadStateParts(json, profile.state, &reason);
  profile.name = CleanViewName(std::move(profile.name));
  profile.state.row.reset();
  if (read && profile.name.empty()) reason = "a profile without a name";
  if (!reason.empty()) return FailWith(why, reason, std::optional<Profile>());
  return profile;
}

std::optional<Profile> LoadProfile(const std::string& path, std::string* why) {
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  std::string content(kViewBytesMax + 1, '\0'), reason;
  if (in) in.read(content.data(), static_cast<std::streamsize>(content.size()));
  if (in.bad() || !in.is_open() || errno != 0)
    return FailWith(why, path + ": " + SystemReason(errno ? errno : EIO), std::optional<Profile>());
  content.resize(static_cast<std::size_t>(in.gcount()));
  std::optional<Profile> profile = ReadProfile(content, &reason);
  if (!profile) FailWith(why, path + ": " + reason);
  return profile;
}

bool SaveProfile(const std::string& path, const Profile& profile, std::string* why) {
  std::string text;
  NewFile file;
  if (!ProfileText(profile, text, why) || !file.Begin(path, why)) return false;
  std::ofstream out(file.WriteTo(), std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) return FailOn(why, path);
  return file.Finish(why);
}

std::string CleanViewName(std::string name) {
  name = ReplaceMalformed(name);
  for (char& c : name)
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
  const std::size_t first = name.find_first_not_of(' ');
  if (first == name.npos) return {};
  return name.substr(first, name.find_last_not_of(' ') - first + 1);
}
