// The scenes of the line of filter text above the rows of a file, and of what leads to it.
#pragma once

#include "mark_scenes.h"
#include "reading_scenes.h"
#include "shell/filterline/ui/filter_line_widget.h"
#include "shot_scenes.h"

class FilterScenes {
 public:
  // Both outlive this. REQUIRES: a file is in front.
  FilterScenes(CTesseraApp& tessera, ShotScenes& scenes) : m_tessera(tessera), m_scenes(scenes) {}

  void All();
  // Of all traces.
  void Statistics();
  void Reading() { ReadingScenes(m_tessera, m_scenes).All(); }
  void Marks() { MarkScenes(m_tessera, m_scenes).All(); }
  // The overview as it is, zoomed, and with a range that is chosen.
  void Overview();

 private:
  FilterLineWidget& Line();
  void Type(const QString& text);
  void Save(const QString& name);

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
};
