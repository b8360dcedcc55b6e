// The scenes of the procedure tree's pictures: small, deep, a million leaves, live.
#pragma once

#include "replay.h"
#include "shot_scenes.h"

class CProcView;

class TreeScenes {
 public:
  // All of them must outlive this. `file` is a trace file, `folder` is for the scenes' own files.
  TreeScenes(CTesseraApp& tessera, ShotScenes& scenes, Replay& traces, std::string file,
             QString folder);

  void Light();
  void Dark();

 private:
  void Small();
  void Deep();
  void Million();
  void Live();
  CProcView& Show(const std::string& path);  // opens it and toggles to the tree
  CProcView& Tree();
  void Save(const QString& name);
  void Close();

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
  Replay& m_traces;
  const std::string m_file;
  const QString m_folder;
};
