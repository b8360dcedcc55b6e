// The scenes of the dialogs over a trace list, and of source windows.
#pragma once

#include "shot_scenes.h"

class DialogScenes {
 public:
  // Both outlive this. `source` is a file with program text; file dialogs show `folder`.
  DialogScenes(CTesseraApp& tessera, ShotScenes& scenes, QString source, QString folder);

  // REQUIRES: a trace list in front, with a focused row.
  void All();
  // The list in the colours that come with the program, and their dialog.
  void Colours();
  void Times();
  // The dialog of the profiles, with three of them.
  void Profiles();

 private:
  void Find();
  void Filter();
  void FilterPart();
  void SaveFileDialog(unsigned command, const QString& name);
  void Source();
  void Locate();
  // Answers the dialogs of the command, which may be two, one over the other.
  void Run(unsigned command, std::function<void(QWidget&)> act);

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
  const QString m_source;
  const QString m_folder;
};
