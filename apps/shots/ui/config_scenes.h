// The scenes of an application's property sheet, on a machine without a process.
#pragma once

#include <memory>

#include "config/document/config_doc.h"
#include "shot_scenes.h"
#include "support/fake_machine.h"

class ConfigScenes {
 public:
  // Both outlive this.
  ConfigScenes(CTesseraApp& tessera, ShotScenes& scenes);

  void All();

 private:
  void Traces();
  void NoTraces();
  void Modify();
  void Sinks();
  void Kept();
  void Away();
  // Runs the sheet of an application; the act ends it.
  void Run(const std::string& app, std::function<void(QWidget&)> act);

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
  FakeMachine m_machine;
  std::unique_ptr<CConfigDoc> m_doc;
};
