#include "documents/trace_file_conversion.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/rename_file.h"
#include "records/old_conversion.h"

namespace {

class Conversion {
 public:
  Conversion(const MappedFile& old, const std::string& path, const ConversionEars& ears)
      : m_old(old),
        m_path(path),
        m_temporary(path + ".tmp"),
        m_aside(path + ".old"),
        m_ears(ears) {}

  bool Run() {
    const bool swapped = WriteTemporary() && Swap();
    // Only now: until it has its name nobody else may take it for a temporary file of his own.
    m_writer.Finish();
    return swapped;
  }

 private:
  bool Failed(const char* words) {
    m_ears.say(words, BoxIcon::Stop);
    return false;
  }

  bool WriteTemporary() {
    if (!m_writer.Create(m_temporary)) return Failed("Error creating temporary file");
    KeepPermissions();
    const OldConversion result =
        ConvertOldTrc(m_old.View(), m_writer,
                      [this](std::uint64_t position) { return m_ears.progress(position, false); });
    // The old file is about to go: the new one has to be on the disk.
    if (!(result.written && m_writer.Sync())) return Failed("Error writing to temporary file");
    m_ears.progress(result.position, true);
    return true;
  }

  // Who could not read the old file is not to read the new one.
  void KeepPermissions() {
    constexpr mode_t kPermissions = 0777;
    struct stat status;
    if (stat(m_path.c_str(), &status) == 0)
      fchmodat(AT_FDCWD, m_temporary.c_str(), status.st_mode & kPermissions, AT_SYMLINK_NOFOLLOW);
  }

  bool Swap() {
    if (unlink(m_aside.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR)
      return Failed("Error removing old trace file");
    if (!RenameWithoutReplacing(m_path, m_aside)) return Failed("Error renaming old trace file");
    if (!RenameWithoutReplacing(m_temporary, m_path))
      return Failed("Error renaming temporary file");
    if (unlink(m_aside.c_str()) != 0) m_ears.say("Error removing old trace file", BoxIcon::Warning);
    return true;
  }

  const MappedFile& m_old;
  const std::string& m_path;
  const std::string m_temporary, m_aside;
  const ConversionEars& m_ears;
  TrcWriter m_writer{TrcWriter::kBlockBytes};
};

}  // namespace

std::shared_ptr<const MappedFile> ConvertTraceFile(const MappedFile& old, const std::string& path,
                                                   const ConversionEars& ears) {
  return Conversion(old, path, ears).Run() ? MappedFile::Open(path) : nullptr;
}
