#include "commands/profile_option.h"

#include <unistd.h>

#include "base/near/near_word.h"
#include "filter/where_option.h"
#include "listview/columns/columns.h"
#include "text/visible_text.h"
#include "views/stored_views.h"

namespace {

constexpr const char* kName = "--profile";

std::string WhyUnknown(const std::string& name) {
  std::vector<std::string> names;
  std::string all;
  for (const Profile& profile : ReadProfiles()) {
    names.push_back(profile.name);
    all += (all.empty() ? "" : ", ") + profile.name;
  }
  return VisibleText("there is no profile \"" + name + "\"" + DidYouMean(name, names) +
                     (all.empty() ? "; there are none" : "; there are " + all));
}

Profile ProfileOf(const std::string& name) {
  if (auto profile = FindProfile(name)) return std::move(*profile);
  if (access(name.c_str(), F_OK) != 0) throw CLI::ValidationError(kName, WhyUnknown(name));
  std::string why;
  auto profile = LoadProfile(name, &why);
  if (!profile) throw CLI::ValidationError(kName, VisibleText(why));
  return std::move(*profile);
}

std::vector<Column> ColumnsOf(const ViewState& state, bool hasReference) {
  std::vector<Column> columns;
  for (const ViewColumn& each : state.columns) {
    const std::optional<Column> column = each.shown ? ColumnByHeader(each.header) : std::nullopt;
    if (column && (*column != Column::Since || hasReference)) columns.push_back(*column);
  }
  return columns;
}

}  // namespace

void ProfileOption::Add(CLI::App& app) {
  app.add_option(kName, m_name,
                 "The columns, the filter text and the colours of this profile of the desktop, or "
                 "of an exported one. --columns and --colour-rules replace its own, --where is "
                 "added")
      ->type_name("NAME|FILE");
}

void ProfileOption::TakeFilter(TraceOptions& traces) {
  if (!m_name) return;
  m_profile = ProfileOf(*m_name);
  std::string why;
  for (const auto& text : {m_profile.state.filter, m_profile.state.marks})
    if (!AddWhere(traces.where, text.value_or(""), &why))
      throw CLI::ValidationError(kName, VisibleText(m_profile.name) + ": " + why);
}

void ProfileOption::TakeLook(DumpOptions& dump, bool choosesColours) const {
  if (!m_name || dump.format != DumpFormat::Text) return;
  const ViewState& state = m_profile.state;
  std::vector<Column> columns = ColumnsOf(state, dump.traces.sinceRow && !dump.traces.follow);
  if (!dump.traces.columns && !columns.empty()) dump.traces.columns = std::move(columns);
  if (!choosesColours && dump.coloured && state.colours && state.colours->shown)
    dump.colours = ColourProgram::Compile(state.colours->rules);
}
