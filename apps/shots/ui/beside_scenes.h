// The scenes of what stands beside the rows of a file.
#pragma once

#include "shot_scenes.h"

class BesideScenes {
 public:
  // Both outlive this. REQUIRES: a file is in front.
  BesideScenes(CTesseraApp& tessera, ShotScenes& scenes) : m_tessera(tessera), m_scenes(scenes) {}

  // Below the rows and at their right.
  void Details();
  void Hits();  // the list of all hits of a search

 private:
  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
};
