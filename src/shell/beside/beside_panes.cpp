#include "shell/beside/beside_panes.h"

#include <algorithm>
#include <utility>

#include "panes/trace_pane.h"
#include "shell/beside/stored_beside.h"

BesidePanes::BesidePanes(Host& host, MakeArea makeArea, std::function<TracePane*()> shown)
    : m_makeArea(std::move(makeArea)), m_shown(std::move(shown)), m_bury(host, [this] {
        m_goneArea.reset();
        m_gone.clear();
      }) {}

// The window of the area borrows those of the panes.
BesidePanes::~BesidePanes() {
  See(nullptr);
  if (m_area) m_window->ShowBeside(nullptr, m_edge, 0);
  m_area.reset();
}

void BesidePanes::Add(unsigned command, const char* stored, MakePane make) {
  m_kinds.push_back({command, stored, std::move(make)});
}

void BesidePanes::OnCreate(ChildFrameFace& window) {
  m_window = &window;
  if (!m_shown()) return;
  for (Kind& kind : m_kinds)
    if (kind.stored && IsBesideOpen(kind.stored)) Show(kind);
}

void BesidePanes::OnPane() {
  TracePane* const shown = m_shown();
  if (!shown || shown == m_watched) return;
  BesidePane* const seen = std::exchange(m_seen, nullptr);
  if (seen) m_watched->Unwatch(*seen);
  m_watched = shown;
  for (const Kind& kind : m_kinds)
    if (kind.pane) kind.pane->OnPane(*shown);
  if (seen) See(seen);
}

// ---- opening and putting away

void BesidePanes::Toggle(unsigned command) {
  Kind* const kind = KindOf(command);
  if (kind && kind->pane && kind->pane.get() == m_seen)
    Close(*kind);
  else
    Open(command);
}

BesidePane* BesidePanes::Open(unsigned command) {
  Kind* const kind = KindOf(command);
  if (!kind || !m_window || !m_shown()) return nullptr;
  Show(*kind);
  if (kind->stored) StoreBesideOpen(kind->stored, true);
  return kind->pane.get();
}

void BesidePanes::Show(Kind& kind) {
  const bool first = !m_area;
  if (first) {
    m_area = m_makeArea(*this);
    m_watched = m_shown();
  }
  if (!kind.pane) {
    kind.pane = kind.make();
    kind.pane->OnPane(*m_watched);
    m_area->InsertTab(PlaceOf(kind), kind.pane->Title(), kind.pane->Control());
  }
  m_area->SetFront(PlaceOf(kind));
  if (first) Place();
  See(kind.pane.get());
}

// The pane, or the area, may be handling an event of the user: both end after that.
void BesidePanes::Close(Kind& kind) {
  PutAway(kind);
  if (kind.stored) StoreBesideOpen(kind.stored, false);
}

void BesidePanes::PutAway(Kind& kind) {
  const bool focus = HasFocus();
  const std::size_t place = PlaceOf(kind);
  if (m_seen == kind.pane.get()) See(nullptr);
  m_area->RemoveTab(place);
  m_gone.push_back(std::exchange(kind.pane, nullptr));
  if (const Kind* const front = KindAt(m_area->Front())) {
    See(front->pane.get());
    if (focus) m_area->SetFocus();
  } else {
    m_window->ShowBeside(nullptr, m_edge, 0);
    m_goneArea = std::move(m_area);
    if (focus) FocusRows();
  }
  m_bury.Ask();
}

void BesidePanes::See(BesidePane* pane) {
  if (pane == m_seen) return;
  if (BesidePane* const before = std::exchange(m_seen, pane)) {
    m_watched->Unwatch(*before);
    before->OnShown(false);
  }
  if (!pane) return;
  m_watched->Watch(*pane);
  pane->OnShown(true);
}

BesidePane* BesidePanes::Find(unsigned command) const {
  const auto kind = std::ranges::find(m_kinds, command, &Kind::command);
  return kind == m_kinds.end() ? nullptr : kind->pane.get();
}

BesidePanes::Kind* BesidePanes::KindOf(unsigned command) {
  const auto kind = std::ranges::find(m_kinds, command, &Kind::command);
  return kind == m_kinds.end() ? nullptr : &*kind;
}

BesidePanes::Kind* BesidePanes::KindAt(std::size_t place) {
  for (Kind& kind : m_kinds)
    if (kind.pane && place-- == 0) return &kind;
  return nullptr;
}

std::size_t BesidePanes::PlaceOf(const Kind& kind) const {
  std::size_t place = 0;
  for (const Kind* each = m_kinds.data(); each != &kind; ++each) place += each->pane ? 1 : 0;
  return place;
}

std::vector<std::string> BesidePanes::OpenNames() const {
  std::vector<std::string> names;
  for (const Kind& kind : m_kinds)
    if (kind.pane && kind.stored) names.emplace_back(kind.stored);
  return names;
}

std::vector<std::string> BesidePanes::OpenThese(const std::vector<std::string>& names) {
  std::vector<std::string> unknown = names;
  if (!m_window || !m_shown()) return unknown;
  for (Kind& kind : m_kinds) {
    if (!kind.stored) continue;
    const bool wanted = std::ranges::find(names, kind.stored) != names.end();
    if (wanted && !kind.pane) Show(kind);
    if (!wanted && kind.pane) PutAway(kind);
    std::erase(unknown, kind.stored);
  }
  return unknown;
}

void BesidePanes::OnTitle(const BesidePane& pane) {
  for (const Kind& kind : m_kinds)
    if (kind.pane.get() == &pane) m_area->SetTabTitle(PlaceOf(kind), pane.Title());
}

// ---- the user's tabs

void BesidePanes::OnTab(std::size_t place) {
  if (const Kind* const kind = KindAt(place)) See(kind->pane.get());
}

void BesidePanes::OnCloseTab(std::size_t place) {
  if (Kind* const kind = KindAt(place)) Close(*kind);
}

// ---- the place

BesideEdge BesidePanes::Edge() const {
  return m_area ? m_edge : StoredBesideEdge();
}

void BesidePanes::SetEdge(BesideEdge edge) {
  StoreBesideEdge(edge);
  if (m_area) Place();
}

void BesidePanes::Place() {
  m_edge = StoredBesideEdge();
  m_window->ShowBeside(m_area.get(), m_edge, StoredBesideExtent(m_edge));
}

void BesidePanes::OnExtent(int extentPx) {
  StoreBesideExtent(m_edge, extentPx);
}

// ---- the focus

void BesidePanes::SetFocus() {
  if (m_area) m_area->SetFocus();
}

void BesidePanes::SwitchFocus() {
  const TracePane* const shown = m_shown();
  if (!shown) return;
  if (m_area && !m_area->HasFocus())
    m_area->SetFocus();
  else
    FocusRows();
}

bool BesidePanes::OnEscape() {
  if (!HasFocus()) return false;
  FocusRows();
  return true;
}

void BesidePanes::FocusRows() {
  TracePane* const shown = m_shown();
  if (shown && shown->Control()) shown->Control()->SetFocus();
}
