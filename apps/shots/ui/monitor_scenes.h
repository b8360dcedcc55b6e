// The scenes of a monitor's pictures: empty, running, paused, capturing, filtered, at the limit.
#pragma once

#include "replay.h"
#include "shot_scenes.h"

class CTraceRealtimeFrame;
class CTraceView;

class MonitorScenes {
 public:
  // All of them must outlive this.
  MonitorScenes(CTesseraApp& tessera, ShotScenes& scenes, Replay& traces, QString folder);

  void Light();
  void Dark();

 private:
  void Open();
  void Close();
  void Take(std::size_t traces);  // they arrive, and the next drain takes them
  void Save(const QString& name);
  void Query();
  void Capturing();
  void Filtered();
  void AtTheLimit();
  CTraceRealtimeFrame& Frame();
  CTraceView& List();

  CTesseraApp& m_tessera;
  ShotScenes& m_scenes;
  Replay& m_traces;
  const QString m_folder;  // for the file of a capture
};
