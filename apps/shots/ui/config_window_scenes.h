// The scenes of a configuration's window, on a machine without a process.
#pragma once

#include "shot_scenes.h"
#include "support/fake_machine.h"

class ConfigWindowScenes {
 public:
  // Both outlive this.
  ConfigWindowScenes(CTesseraApp& tessera, ShotScenes& scenes);

  void All();

 private:
  void Query();
  void Empty();
  void AddDialog();
  void Filled();
  void PopUp();
  void Gone();
  void Save(const QString& name);

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
  FakeMachine m_machine;
};
