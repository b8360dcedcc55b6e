// The scenes of the wizard: each of its pages, on machines without a process.
#pragma once

#include "shot_scenes.h"
#include "support/fake_machine.h"

class WizardScenes {
 public:
  // Both outlive this.
  WizardScenes(CTesseraApp& tessera, ShotScenes& scenes);

  void All();

 private:
  void Walk(QWidget& wizard);
  void Page(QWidget& wizard, const char* name);
  void AddMachine(QWidget& wizard, const char* name);

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
  FakeMachine m_machine;
};
