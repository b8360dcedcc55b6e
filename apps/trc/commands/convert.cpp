#include "commands/convert.h"

#include "base/mapped_file.h"
#include "base/new_file.h"
#include "records/old_conversion.h"
#include "records/trc_walk.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress_line.h"
#include "terminal/trace_file.h"

namespace {

int Refuse(const std::string& path, const std::string& text) {
  PrintError(path + ": " + text);
  return kExitBad;
}

int Convert(const MappedFile& old, const ConvertOptions& options) {
  std::string why;
  NewFile file;
  TrcWriter writer(TrcWriter::kBlockBytes);
  CatchEndSignals();
  if (!file.Begin(options.out, &why) || !writer.Create(file.WriteTo(), &why))
    return Refuse(options.out, why);
  ProgressLine progress;
  const OldConversion result = ConvertOldTrc(old.View(), writer, [&](std::uint64_t position) {
    progress.Show("Converting...", position, old.Size());
    return !Interrupted();
  });
  progress.Clear();
  if (!(writer.Finish() && result.written))
    return Refuse(options.out, "Error writing to file. " + writer.Why());
  if (result.cancelled) {
    PrintError(options.out + ": interrupted after " + std::to_string(result.traces) +
               " traces, and not written");
    return kExitInterrupted;
  }
  if (!IsUnchanged(old, options.in, options.out)) return kExitBad;
  if (!file.Finish(&why)) return Refuse(options.out, why);
  for (const std::string& text : LossTexts(result, true)) PrintError(options.in + ": " + text);
  return result.damage.Any() ? kExitDamaged : kExitGood;
}

}  // namespace

int RunConvert(const ConvertOptions& options) {
  std::string why;
  const auto old = MappedFile::Open(options.in, &why);
  if (!old) return Refuse(options.in, why);
  const TrcVersion version = VersionOf(old->View());
  if (version == TrcVersion::Unknown) return Refuse(options.in, "Invalid format.");
  if (version == TrcVersion::Current)
    return Refuse(options.in, "it is in the current format already");

  return Convert(*old, options);
}
