// The scenes of marks and notes: rows that have some, the list of them, the dialog of a note.
#pragma once

#include "shot_scenes.h"

class MarkScenes {
 public:
  // Both outlive this. REQUIRES: a file is in front. Leaves it without marks.
  MarkScenes(CTesseraApp& tessera, ShotScenes& scenes) : m_tessera(tessera), m_scenes(scenes) {}

  void All();

 private:
  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
};
