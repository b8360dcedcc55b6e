#include "records/trc_walk.h"

#include "base/mapped_file.h"

// A record that begins on the last byte of a mapped file is read to its end.
static_assert(MappedFile::kGuardBytes >= kTagBytes + kTraceBytesMax);

TrcVersion VersionOf(Bytes bytes) {
  if (bytes.empty()) return TrcVersion::Unknown;  // its address may be null
  const auto* const text = reinterpret_cast<const char*>(bytes.data());
  const std::string_view version(text, strnlen(text, bytes.size()));
  if (version == kTrcHeader) return TrcVersion::Current;
  if (version == kOldTrcHeader) return TrcVersion::Old;
  return TrcVersion::Unknown;
}
