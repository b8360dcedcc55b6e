#include "documents/trace_file_conversion.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/rename_file.h"

namespace {

class Conversion {
 public:
  Conversion(const MappedFile& old, const std::string& path, const ConversionCallbacks& callbacks,
             OldConversion& result)
      : m_old(old),
        m_path(path),
        m_temporary(path + ".tmp"),
        m_aside(path + ".old"),
        m_callbacks(callbacks),
        m_result(result) {}

  bool Run() {
    const bool swapped = IsWhatWasMapped() ? WriteTemporary() && Swap() : Failed(kRenameOld);
    if (m_givenUp) RemoveTemporary();
    // Only now: until the file has its name no other program may take it for a temporary file.
    m_writer.Finish();
    return swapped;
  }

 private:
  static constexpr char kRenameOld[] = "Error renaming old trace file";
  static constexpr char kRenameNew[] = "Error renaming temporary file";
  static constexpr char kRemoveOld[] = "Error removing old trace file";

  bool Failed(const char* text) {
    m_callbacks.showMessage(text, BoxIcon::Stop);
    return false;
  }
  // Before our own renames, which count as changes.
  bool IsWhatWasMapped() const { return FileMark::At(m_path) == m_old.Mark(); }
  bool IsUnwrittenAt(const std::string& path) const {
    const std::optional<FileMark> mark = FileMark::At(path);
    return mark && mark->IsUnwritten(m_old.Mark());
  }
  bool IsOursAt(const std::string& path) const {
    const std::optional<FileMark> ours = m_writer.Mark(), there = FileMark::At(path);
    return ours && there && there->IsSameFile(*ours);
  }
  void RemoveTemporary() const {
    if (IsOursAt(m_temporary)) unlink(m_temporary.c_str());
  }
  ConversionControl Progress(std::uint64_t position, bool last) {
    const ConversionControl control = m_callbacks.progress(position, last);
    m_givenUp = m_givenUp || control == ConversionControl::Abandon;
    return control;
  }

  bool WriteTemporary() {
    if (!m_writer.Create(m_temporary, nullptr, Links::Refuse) || !KeepPermissions())
      return Failed("Error creating temporary file");
    m_result = ConvertOldTrc(m_old.View(), m_writer, [this](std::uint64_t position) {
      return Progress(position, false) == ConversionControl::Continue;
    });
    if (m_givenUp) return false;
    // The old file will be deleted: the new one must be on the disk.
    if (!(m_result.written && m_writer.Sync())) return Failed("Error writing to temporary file");
    Progress(m_result.position, true);
    return !m_givenUp;
  }

  // Users who could not read the old file must not be able to read the new one. A file system
  // without permissions has the same for both.
  bool KeepPermissions() {
    constexpr mode_t kPermissions = 0777;
    struct stat was, is;
    if (stat(m_path.c_str(), &was) != 0) return true;
    const mode_t wanted = was.st_mode & kPermissions;
    if (fchmodat(AT_FDCWD, m_temporary.c_str(), wanted, AT_SYMLINK_NOFOLLOW) == 0) return true;
    return lstat(m_temporary.c_str(), &is) == 0 && (is.st_mode & kPermissions & ~wanted) == 0;
  }

  bool Swap() {
    if (!IsWhatWasMapped()) return Failed(kRenameOld);
    if (unlink(m_aside.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR)
      return Failed(kRemoveOld);
    if (!MoveOldAside()) return Failed(kRenameOld);
    // Another file may take the temporary name before the rename: then the old file stays.
    if (!IsOursAt(m_temporary) || !RenameWithoutReplacing(m_temporary, m_path) || !IsOursAt(m_path))
      return Failed(kRenameNew);
    RemoveOld();
    return true;
  }

  // Another file may have taken the name since the check: then it gets the name back.
  bool MoveOldAside() const {
    if (!IsUnwrittenAt(m_path) || !RenameWithoutReplacing(m_path, m_aside)) return false;
    if (IsUnwrittenAt(m_aside)) return true;
    RenameWithoutReplacing(m_aside, m_path);
    return false;
  }

  // What another program has written into it meanwhile exists nowhere else: then it stays.
  void RemoveOld() {
    if (!IsUnwrittenAt(m_aside) || unlink(m_aside.c_str()) != 0)
      m_callbacks.showMessage(kRemoveOld, BoxIcon::Warning);
  }

  const MappedFile& m_old;
  const std::string& m_path;
  const std::string m_temporary, m_aside;
  const ConversionCallbacks& m_callbacks;
  OldConversion& m_result;
  TrcWriter m_writer{TrcWriter::kBlockBytes};
  bool m_givenUp = false;
};

}  // namespace

std::shared_ptr<const MappedFile> ConvertTraceFile(const MappedFile& old, const std::string& path,
                                                   const ConversionCallbacks& callbacks,
                                                   OldConversion* result) {
  return Conversion(old, path, callbacks, *result).Run() ? MappedFile::Open(path) : nullptr;
}
