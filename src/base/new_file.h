// A file that is written in one go: it stands under its name only when it is whole.
//
// Until then it is written beside that place, as ".trc-PID.part" or ".trc-PID-N.part", and an
// existing file keeps its bytes. It goes with the NewFile when it has not been finished: the work
// failed or was cancelled. A device is written as it stands. So is a file in a folder that may not
// be written, and, with Unfinished::Left, one of several names.
//
// Owner    The caller writes WriteTo() and closes it before Finish or the end.
// Errors   False and a reason for a person. An existing file that anybody has open is refused.
// Threads  One.
#pragma once

#include <string>

#include "base/file_gate.h"

class NewFile {
 public:
  // What becomes of a file that had to be written as it stands and is not finished. Half a trace
  // file would pass for a whole one.
  enum class Unfinished { Emptied, Left };

  explicit NewFile(Unfinished unfinished = Unfinished::Emptied) : m_unfinished(unfinished) {}
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  bool Begin(const std::string& path, std::string* why);
  const std::string& WriteTo() const { return m_writeTo; }
  // Gives the file its name.
  bool Finish(std::string* why);

 private:
  enum class Place { None, Beside, There, Device };
  bool KeepsItsPlace() const;
  bool BeginBeside(std::string* why);
  int MakeBeside();

  const Unfinished m_unfinished;
  Place m_place = Place::None;
  std::string m_target;  // behind symbolic links
  std::string m_writeTo;
  OpenFile m_held;  // the file that is there already
};
