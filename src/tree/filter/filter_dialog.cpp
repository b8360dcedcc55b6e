#include "tree/filter/filter_dialog.h"

#include "base/text.h"

CFilterDialog::CFilterDialog(Host& host, CTraceFilter& filter, NameMap& names)
    : CDialog(host), m_filter(filter), m_nameMap(names) {}

void CFilterDialog::OnInitDialog() {
  CDialog::OnInitDialog();
  m_tree = std::make_unique<FilterTree>("All Traces", m_filter.allTraces);
  FilterNode& root = m_tree->Root();
  m_selected = nullptr;

  FilterNode& severities = root.Insert("All Severities", m_filter.allSeverities);
  severities.Insert("Info", m_filter.severities[0]);
  severities.Insert("Warn", m_filter.severities[1]);
  severities.Insert("Error", m_filter.severities[2]);
  // Kept: the marks of traces without these bits have no node. A user can hide traces that have a
  // bit, never those that lack it.
  FilterNode& attributes = root.Insert("All Attributes", m_filter.allAttributes);
  attributes.Insert("Developer", m_filter.attributes[1]);
  attributes.Insert("Verbose", m_filter.attributes[3]);

  InsertNames(root.Insert(kComponents, m_filter.allComponents), m_filter.components, "");
  InsertNames(root.Insert(kCategories, m_filter.allCategories), m_filter.categories, "");
  InsertNames(root.Insert(kApplications, m_filter.allApplications), m_filter.applications, "");
  InsertThreads(root);
  m_tree->Refresh();
}

void CFilterDialog::InsertNames(FilterNode& parent, std::map<NameId, int>& marks,
                                const char* prefix) {
  for (auto& [id, mark] : marks) parent.Insert(prefix + LabelOf(id), mark);
  parent.SortChildren();
}

void CFilterDialog::InsertThreads(FilterNode& root) {
  FilterNode& threads = root.Insert(kThreads, m_filter.allThreads);
  for (auto& [machineId, machine] : m_filter.threads) {
    FilterNode& machineNode = threads.Insert(LabelOf(machineId), machine.allProcesses);
    for (auto& [processId, process] : machine.processes) {
      FilterNode& processNode =
          machineNode.Insert("PID:" + LabelOf(processId), process.allThreadsOfProcess);
      InsertNames(processNode, process.threadMarks, "TID:");
    }
    machineNode.SortChildren();
  }
  threads.SortChildren();
}

// Kept: an id without a name is added to the map with an empty name.
std::string CFilterDialog::LabelOf(NameId id) {
  return _UTF2MBS(m_nameMap[id].name);
}

bool CFilterDialog::OnTreeClick(FilterNode* node, bool onStateIcon) {
  m_selected = node;
  if (!node || !onStateIcon) return false;
  m_tree->Toggle(*node);
  return true;
}

void CFilterDialog::OnOK() {
  m_tree->WriteMarks();
  CDialog::OnOK();
}

void CFilterDialog::OnAsText() {
  const std::vector<int> before = m_tree->Marks();
  m_tree->WriteMarks();
  const CTraceFilter chosen = m_filter;
  m_tree->SetMarks(before);
  std::string why;
  if (m_takeAsText(chosen, &why))
    EndDialog(kIdAsText);
  else
    GetHost().MessageBox({.text = "This tree cannot be written as a filter text: " + why + "."});
}
