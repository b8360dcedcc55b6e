// A file that is written in one go: it stands under its name only when it is whole.
//
// Until then it is written beside that place, as ".trc-PID.part" or ".trc-PID-N.part", and an
// existing file keeps its bytes. It goes with the NewFile when it has not been finished: the work
// failed or was cancelled. A device is written as it stands.
//
// Finish   Renames. An existing file keeps its rights, its owner and all its names: where a rename
//          would change one of them, or is not allowed (a sticky folder), the whole new file is
//          copied into the existing one, which is first given the room for it on the disk. Only a
//          crash or a broken disk in the middle of that copy can leave a half file, and then the
//          whole new one stays where it was written. Where no file may be made beside an existing
//          one, it is written in the folder for temporary files.
// Owner    The caller writes WriteTo() and closes it before Finish or the end.
// Errors   False and a reason for a person. An existing file that anybody has open is refused.
// Threads  One.
#pragma once

#include <string>

#include "base/file_gate.h"

class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  bool Begin(const std::string& path, std::string* why);
  const std::string& WriteTo() const { return m_writeTo; }
  // Gives the file its name, or an existing one its bytes.
  bool Finish(std::string* why);

 private:
  enum class Place { None, Beside, Elsewhere, Device };
  bool BeginBeside(std::string* why);
  int MakeIn(const std::string& folder);
  bool Rename(std::string* why);
  bool CopyOver(std::string* why);

  Place m_place = Place::None;
  std::string m_target;  // behind symbolic links
  std::string m_writeTo;
  OpenFile m_held;           // the file that is there already
  bool m_keepsFile = false;  // a rename would change more of it than its bytes
};
