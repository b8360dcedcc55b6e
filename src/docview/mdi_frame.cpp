#include <algorithm>
#include <utility>

#include "docview/commands/command_ids.h"
#include "docview/frame.h"
#include "docview/win_app.h"

CMDIFrameWnd::CMDIFrameWnd(CWinApp& app) : CFrameWnd(app.GetHost()), m_app(app) {
  const auto map = [this](unsigned id, WindowLayout layout) {
    MapCommand(
        id, [this, layout] { LayOutChildren(layout); },
        [this](CCmdUI& ui) { ui.Enable(!m_children.empty()); });
  };
  map(ID_WINDOW_CASCADE, WindowLayout::Cascade);
  map(ID_WINDOW_TILE_HORZ, WindowLayout::Tile);
  map(ID_WINDOW_ARRANGE, WindowLayout::ArrangeIcons);
}

CMDIFrameWnd::~CMDIFrameWnd() {
  DestroyChildren();
}

void CMDIFrameWnd::DestroyChildren() {
  while (!m_children.empty()) m_children.back()->Destroy();
}

void CMDIFrameWnd::OnActiveChild(CMDIChildWnd*) {
  UpdateTitle();
}

CMDIChildWnd* CMDIFrameWnd::AddChild(std::unique_ptr<CMDIChildWnd> child) {
  m_children.push_back(std::move(child));
  return m_children.back().get();
}

std::unique_ptr<CMDIChildWnd> CMDIFrameWnd::TakeChild(CMDIChildWnd& child) {
  const auto place = std::find_if(m_children.begin(), m_children.end(),
                                  [&child](const auto& each) { return each.get() == &child; });
  if (place == m_children.end()) return nullptr;
  std::unique_ptr<CMDIChildWnd> taken = std::move(*place);
  m_children.erase(place);
  return taken;
}

// The active child may be destroyed when its handler returns: it is not used again.
bool CMDIFrameWnd::OnCommand(unsigned id) {
  return (m_activeChild && m_activeChild->OnCommand(id)) || CFrameWnd::OnCommand(id) ||
         m_app.OnCommand(id);
}

bool CMDIFrameWnd::OnUpdateCommand(CCmdUI& ui) {
  return (m_activeChild && m_activeChild->OnUpdateCommand(ui)) || CFrameWnd::OnUpdateCommand(ui) ||
         m_app.OnUpdateCommand(ui);
}

bool CMDIFrameWnd::HasCommand(unsigned id) const {
  return (m_activeChild && m_activeChild->HasCommand(id)) || CFrameWnd::HasCommand(id) ||
         m_app.HasCommand(id);
}
