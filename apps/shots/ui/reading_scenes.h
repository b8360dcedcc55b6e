// The scenes of the guide's chapter on reading: all that stands beside the rows of a file at once.
#pragma once

#include "shot_scenes.h"

class ReadingScenes {
 public:
  // Both outlive this. REQUIRES: a file is in front. Leaves it without marks and colours.
  ReadingScenes(CTesseraApp& tessera, ShotScenes& scenes) : m_tessera(tessera), m_scenes(scenes) {}

  // Forty colour rules; then marks, overview and details at once, also in a small window.
  void All();
  // Of a file without traces, which is made there and stays open.
  void Empty(const std::string& path);

 private:
  void Run(unsigned command);
  void Save(const QString& name);
  void Mark();
  void Unmark();
  void FortyColours();

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
};
