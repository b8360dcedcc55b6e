#include "where/steps/where_steps.h"

void WhereSteps::Go(std::string text) {
  if (text == Text()) return;
  m_texts.resize(m_at + 1);
  m_texts.push_back(std::move(text));
  if (m_texts.size() > kWhereStepsMax) m_texts.erase(m_texts.begin());
  m_at = m_texts.size() - 1;
}

bool WhereSteps::Back() {
  if (!CanGoBack()) return false;
  --m_at;
  return true;
}

bool WhereSteps::Forward() {
  if (!CanGoForward()) return false;
  ++m_at;
  return true;
}
