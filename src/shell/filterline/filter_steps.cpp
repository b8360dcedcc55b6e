#include "shell/filterline/filter_steps.h"

void FilterSteps::Go(std::string text, Tree before) {
  if (text == Text() && !before) return;
  m_steps.resize(m_at + 1);
  m_steps.push_back({std::move(text), std::move(before)});
  if (m_steps.size() > kFilterStepsMax) m_steps.erase(m_steps.begin());
  m_at = m_steps.size() - 1;
}

bool FilterSteps::Back(Tree left) {
  if (!CanGoBack()) return false;
  m_steps[m_at--].tree = std::move(left);
  return true;
}

bool FilterSteps::Forward(Tree left) {
  if (!CanGoForward()) return false;
  m_steps[++m_at].tree = std::move(left);
  return true;
}
