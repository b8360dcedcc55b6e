#include "listview/colours/list_colours.h"

bool ListColours::AreOwn() const {
  return m_own && m_choices == ColourChoices();
}

const ColourProgramPtr& ListColours::Shown() const {
  return AreOwn() ? *m_own : ActiveColours();
}

ViewColours ListColours::State() const {
  const ColourProgramPtr& program = Shown();
  if (!program) return {};
  return {true, program->Rules()};
}

void ListColours::SetState(const ViewColours& colours) {
  const ColourProgramPtr& active = ActiveColours();
  const bool same = colours.shown ? active && active->Rules() == colours.rules : !active;
  m_own.reset();
  if (!same) m_own = colours.shown ? ColourProgram::Compile(colours.rules) : nullptr;
  m_choices = ColourChoices();
}
