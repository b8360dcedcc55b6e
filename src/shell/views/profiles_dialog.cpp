#include "shell/views/profiles_dialog.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "views/stored_views.h"

namespace {

constexpr char kExtension[] = ".profile";

FileDialogRequest RequestOf(const char* title) {
  FileDialogRequest request;
  request.title = title;
  request.defaultExtension = kExtension;
  request.filters = {{"Profiles (*.profile)", "*.profile"}, {"All Files (*.*)", "*"}};
  return request;
}

// As the name of a file.
std::string FileNameOf(std::string name) {
  std::ranges::replace(name, '/', '-');
  return name + kExtension;
}

}  // namespace

std::string MissedText(const std::string& profile, const std::string& missed) {
  return "Not all of \"" + profile + "\" could be applied.\n\n" + missed;
}

CProfilesDialog::CProfilesDialog(Host& host, Collect collect, Apply apply, bool saves)
    : CDialog(host), m_collect(std::move(collect)), m_apply(std::move(apply)), m_saves(saves) {}

void CProfilesDialog::OnInitDialog() {
  ReadNames({});
  if (!m_saves && !m_names.empty()) Select(0);
}

void CProfilesDialog::ReadNames(const std::string& current) {
  m_names.clear();
  m_current = -1;
  for (Profile& profile : ReadProfiles()) {
    if (CompareIgnoringCase(profile.name, current) == 0)
      m_current = static_cast<int>(m_names.size());
    m_names.push_back(std::move(profile.name));
  }
}

void CProfilesDialog::Select(int profile) {
  if (profile < -1 || profile >= static_cast<int>(m_names.size())) return;
  m_current = profile;
  if (profile >= 0) m_name = CurrentName();
}

std::string CProfilesDialog::CurrentName() const {
  return m_current < 0 ? std::string() : m_names[static_cast<std::size_t>(m_current)];
}

std::string CProfilesDialog::Description() const {
  const std::optional<Profile> profile = FindProfile(CurrentName());
  if (!profile) return {};
  const ViewState& state = profile->state;
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  const auto shown = std::ranges::count(state.columns, true, &ViewColumn::shown);
  if (!state.columns.empty()) add(std::to_string(shown) + (shown == 1 ? " column" : " columns"));
  if (state.filter) add(state.filter->empty() ? "all traces" : "filter " + *state.filter);
  if (!state.marks.value_or("").empty()) add("tree of the filter dialog");
  if (state.colours) add(state.colours->shown ? "colours" : "no colours");
  if (state.tree) add(*state.tree ? "tree" : "list");
  for (const std::string& pane : state.panes.value_or(std::vector<std::string>())) add(pane);
  return text;
}

bool CProfilesDialog::Ask(const std::string& question) {
  return GetHost().MessageBox({.text = question,
                               .icon = BoxIcon::Question,
                               .buttons = BoxButtons::YesNo,
                               .preferred = BoxAnswer::No}) == BoxAnswer::Yes;
}

void CProfilesDialog::Say(const std::string& text) {
  GetHost().MessageBox({.text = text, .icon = BoxIcon::Warning});
}

void CProfilesDialog::Keep(Profile profile) {
  const std::string name = CleanViewName(profile.name);
  if (FindProfile(name) && !Ask("There is a profile \"" + name + "\". Replace it?")) return;
  std::string why;
  if (!KeepProfile(std::move(profile), &why)) return Say(why);
  ReadNames(name);
  m_name = name;
}

void CProfilesDialog::Save() {
  Profile profile{m_name, m_collect()};
  profile.state.row.reset();
  Keep(std::move(profile));
}

void CProfilesDialog::ApplyCurrent() {
  const std::optional<Profile> profile = FindProfile(CurrentName());
  if (!profile) return Say("This profile cannot be read.");
  const std::string missed = m_apply(profile->state);
  if (!missed.empty()) Say(MissedText(profile->name, missed));
}

void CProfilesDialog::Rename() {
  std::string why;
  if (m_current < 0) return;
  if (!RenameProfile(CurrentName(), m_name, &why)) return Say(why);
  ReadNames(CleanViewName(m_name));
}

void CProfilesDialog::Delete() {
  const std::string name = CurrentName();
  const int place = m_current;
  if (m_current < 0 || !Ask("Delete the profile \"" + name + "\"?")) return;
  DeleteProfile(name);
  ReadNames({});
  m_name.clear();
  Select(std::min(place, static_cast<int>(m_names.size()) - 1));
}

void CProfilesDialog::Import() {
  const auto answer = GetHost().RunFileDialog(RequestOf("Import Profile"));
  if (!answer) return;
  std::string why;
  std::optional<Profile> profile = LoadProfile(answer->path, &why);
  if (!profile) return Say(why);
  Keep(std::move(*profile));
}

void CProfilesDialog::Export() {
  const std::optional<Profile> profile = FindProfile(CurrentName());
  if (!profile) return;
  FileDialogRequest request = RequestOf("Export Profile");
  request.save = true;
  request.suggestedName = FileNameOf(profile->name);
  const auto answer = GetHost().RunFileDialog(request);
  std::string why;
  if (answer && !SaveProfile(answer->path, *profile, &why)) Say(why);
}
