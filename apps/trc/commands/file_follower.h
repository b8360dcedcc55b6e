// Gives the traces of a file, and of those that take its place, until it is interrupted.
//
// Owner    Borrows the traces.
// Threads  One.
#pragma once

#include <chrono>
#include <string>

#include "commands/followed_traces.h"
#include "input/file_watch.h"
#include "input/growing_file.h"
#include "terminal/progress_line.h"

class FileFollower {
 public:
  FileFollower(const std::string& path, const DumpOptions& options, FollowedTraces& traces);

  // False after a message on standard error.
  bool Run();
  bool HasDamage() const { return m_damaged; }
  // Were numbered files removed before they were read?
  bool HasLoss() const { return m_lost; }

 private:
  using Clock = std::chrono::steady_clock;
  // What is there at the beginning is walked for its names, and for --tail once more.
  enum class Phase { Names, Count, Give };

  bool Open();
  bool Step();
  void Look();
  void EndLook();
  bool AtEnd();
  void Enter(GrowingFile::Moved how, bool wasCut, std::uint64_t cutAt);
  bool Wait();
  void NoteAway();
  void NoteBlank();
  void LeaveFile();
  void BeginSurvey();
  void ReportDamage();
  bool GoesOn() const;
  bool IsPast() const;
  void Say(const std::string& text) const;
  bool Fail(const std::string& why) const;
  Bytes PresentPiece() const;

  const std::string m_path;
  const DumpOptions& m_options;
  FollowedTraces& m_traces;
  GrowingFile m_file;
  FileWatch m_watch;
  ProgressLine m_progress;
  Phase m_phase = Phase::Give;
  std::uint64_t m_presentEnd = 0;
  std::optional<Clock::time_point> m_away;  // since when no file has the name
  bool m_saidAway = false, m_saidBlank = false, m_damaged = false, m_lost = false,
       m_readerGone = false;
};
