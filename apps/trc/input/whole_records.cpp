#include "input/whole_records.h"

#include <algorithm>
#include <cstring>

#include "base/fail_with.h"
#include "input/unpack.h"
#include "records/trc_walk.h"

TrcBegin BeginOfTrc(Bytes bytes, std::string* why) {
  const Bytes begin = bytes.first(std::min(bytes.size(), kTrcHeaderBytes));
  if (begin.empty() || std::memcmp(begin.data(), kTrcHeader, begin.size()) == 0)
    return begin.size() < kTrcHeaderBytes ? TrcBegin::Short : TrcBegin::Good;
  const std::string_view text(reinterpret_cast<const char*>(begin.data()), begin.size());
  if (PackingOf(text) != PackedAs::Plain)
    return FailWith(why, "--follow is not for packed files: they do not grow", TrcBegin::Bad);
  if (VersionOf(begin) == TrcVersion::Old)
    return FailWith(why, "an older trace file format; 'trc convert OLD.trc NEW.trc' converts it",
                    TrcBegin::Bad);
  return FailWith(why, "Invalid format.", TrcBegin::Bad);
}
