// The view of a trace window that comes back, and its profiles.
#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "shell/child_frame.h"
#include "shell/main_frame.h"
#include "shell/tessera_app.h"
#include "shell/views/profiles_dialog.h"
#include "views/stored_views.h"

// The first time with its list, whose columns exist.
void CTraceChildFrame::ActivateFrame() {
  m_view.OnShown();
  CMDIChildWnd::ActivateFrame();
}

void CTraceChildFrame::OnDestroy() {
  m_view.OnDestroy();
  CMDIChildWnd::OnDestroy();
}

CTraceView* CTraceChildFrame::ListView() const {
  TracePane* const list = m_panes[kList].view;
  return dynamic_cast<CTraceView*>(list ? list : ShownPane());
}

bool CTraceChildFrame::ToggleTree() {
  const bool shown = IsTreeShown();
  TogglePane(kTree);
  return IsTreeShown() != shown;
}

void CTraceChildFrame::ShowNotice(const std::string& notice) {
  m_main.Tessera().ShowNotice(notice);
}

void CTraceChildFrame::MapProfiles() {
  const auto ifList = [this](CCmdUI& ui) { ui.Enable(HasList()); };
  MapCommand(
      ID_VIEW_PROFILESTANDARD, [this] { m_view.ApplyStandard(); }, ifList);
  MapCommand(
      ID_VIEW_PROFILESAVE, [this] { OnProfiles(true); }, ifList);
  MapCommand(
      ID_VIEW_PROFILEMANAGE, [this] { OnProfiles(false); }, ifList);
  for (unsigned id = ID_VIEW_PROFILE1; id <= ID_VIEW_PROFILELAST; ++id)
    MapCommand(
        id, [this, id] { OnProfile(id - ID_VIEW_PROFILE1); }, ifList);
}

void CTraceChildFrame::OnProfiles(bool save) {
  CProfilesDialog(
      GetHost(), [this] { return m_view.Collect(); },
      [this](const ViewState& state) { return m_view.Apply(state); }, save)
      .DoModal();
}

void CTraceChildFrame::OnProfile(std::size_t place) {
  const std::vector<Profile> profiles = ReadProfiles();
  if (place >= profiles.size()) return;
  const Profile& profile = profiles[place];
  const std::string missed = m_view.Apply(profile.state);
  if (!missed.empty())
    GetHost().MessageBox({MissedText(profile.name, missed), BoxIcon::Warning, BoxButtons::Ok});
}
