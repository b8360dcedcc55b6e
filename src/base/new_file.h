// A file that is written in one go and gets its name only when it is complete.
//
// Until then it is written in the same folder, as ".trc-PID.part" or ".trc-PID-N.part", and an
// existing file keeps its bytes. If the NewFile is destroyed before Finish (the work failed or was
// cancelled), the part is removed. A device is written directly.
//
// Finish   Renames, after the content is on the disk if an existing file is replaced. An existing
//          file keeps its rights, its owner and all its names: if a rename would change one of
//          them, or is not allowed (a sticky folder), the new content is copied into the existing
//          file, which first gets the room for it on the disk. Only a crash or a broken disk during
//          that copy can leave half a file; the complete new file then stays where it was written.
//          If no file can be made in the folder, the part is written in the folder for temporary
//          files.
// Owner    The caller writes to WriteTo() and closes it before Finish or the end.
// Errors   False and a reason for the user. An existing file that anybody has open is refused.
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
  std::string m_target;  // after following symbolic links
  std::string m_writeTo;
  OpenFile m_held;           // the existing file
  bool m_keepsFile = false;  // a rename would change more of it than its bytes
};
