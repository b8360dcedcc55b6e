#include "config/view/add_app_dialog.h"

#include <iterator>
#include <utility>

#include "base/text.h"

CAddAppDialog::CAddAppDialog(Host& host, std::set<std::string> names, std::string note)
    : CDialog(host), m_note(std::move(note)), m_names(std::move(names)) {}

std::vector<std::string> CAddAppDialog::Items() const {
  std::vector<std::string> items;
  items.reserve(m_names.size());
  for (const std::string& name : m_names) items.push_back(_UTF2MBS(name));
  return items;
}

void CAddAppDialog::OnSelect(const std::set<std::size_t>& items) {
  m_selected = items;
  m_selected.erase(m_selected.lower_bound(m_names.size()), m_selected.end());
}

void CAddAppDialog::OnOK() {
  if (!MayOK()) return;
  std::set<std::string> chosen;
  std::size_t number = 0;
  for (const std::string& name : m_names)
    if (m_selected.contains(number++)) chosen.insert(name);
  m_names = std::move(chosen);
  m_selected.clear();
  CDialog::OnOK();
}
