#include "records/trc_walk.h"

TrcVersion VersionOf(Bytes bytes) {
  if (bytes.empty()) return TrcVersion::Unknown;  // its address may be null
  const auto* const text = reinterpret_cast<const char*>(bytes.data());
  const std::string_view version(text, strnlen(text, bytes.size()));
  if (version == kTrcHeader) return TrcVersion::Current;
  if (version == kOldTrcHeader) return TrcVersion::Old;
  return TrcVersion::Unknown;
}
