// The zone of times that do not say theirs.
//
// Threads  Any; the zone of the environment is read by records/zone_offset.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class ImportZone {
 public:
  // The zone of this machine, or of the variable TZ.
  ImportZone() = default;
  // `seconds` east of Greenwich, always.
  explicit ImportZone(int seconds) : m_fixed(seconds) {}

  // Seconds since 1970 of a clock in the zone as seconds since 1970 in UTC. Of an hour that comes
  // twice the first is meant; in one that is left out the clock counts as not yet put forward.
  std::int64_t ToUtc(std::int64_t clockSeconds) const;

 private:
  std::optional<int> m_fixed;
};

// "+01:00", "-0530", "+02", "Z" and "UTC" as seconds; nothing for other words.
std::optional<int> ReadOffset(std::string_view text);

// "local", what ReadOffset reads, or the name of a zone ("Europe/Berlin"), which becomes that of
// the whole program. Nothing and a reason: there is no such zone on this machine.
std::optional<ImportZone> UseZone(const std::string& name, std::string* why);
