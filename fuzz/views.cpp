// Any bytes as the view of a file and as a profile: what is read is within the bounds, is written,
// and reads back the same; else there is a reason of one line.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/text.h"
#include "views/view_text.h"

namespace {

void Demand(bool holds) {
  if (!holds) std::abort();
}

void CheckState(const ViewState& state) {
  Demand(state.columns.size() <= kViewColumnsMax);
  for (const ViewColumn& column : state.columns)
    Demand(column.header.size() <= kViewNameBytes && IsUtf8(column.header) && column.widthPx >= 0 &&
           column.widthPx <= kViewWidthMaxPx);
  if (state.filter) Demand(state.filter->size() <= kViewFilterBytes && IsUtf8(*state.filter));
  if (state.marks) Demand(state.marks->size() <= kViewFilterBytes && IsUtf8(*state.marks));
  if (state.panes) Demand(state.panes->size() <= kViewPanesMax);
  if (state.colours) Demand(state.colours->shown || state.colours->rules.empty());
}

void CheckView(const StoredView& view) {
  CheckState(view.state);
  std::string text, why;
  // A text near the bound may be longer in our own form.
  if (!ViewText(view, text, &why)) return Demand(why == "the view is too long to be kept");
  Demand(IsUtf8(text) && ReadView(text, &why) == view);
}

void CheckProfile(const Profile& profile) {
  CheckState(profile.state);
  Demand(!profile.state.row && !profile.name.empty() &&
         profile.name == CleanViewName(profile.name));
  std::string text, why;
  if (!ProfileText(profile, text, &why)) return Demand(why == "the view is too long to be kept");
  Demand(IsUtf8(text) && ReadProfile(text, &why) == profile);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  std::string notView, notProfile;
  const auto view = ReadView(content, &notView);
  const auto profile = ReadProfile(content, &notProfile);
  Demand(view.has_value() == notView.empty() && profile.has_value() == notProfile.empty());
  Demand(!view || !profile);
  if (view) CheckView(*view);
  if (profile) CheckProfile(*profile);
  return 0;
}
