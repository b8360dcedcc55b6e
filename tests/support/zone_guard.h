// Another time zone for the length of a test.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

#include "records/zone_offset.h"

class ZoneGuard {
 public:
  explicit ZoneGuard(const char* zone) {
    if (const char* const old = getenv("TZ")) m_old = old;
    setenv("TZ", zone, 1);
    ForgetZone();
  }
  ~ZoneGuard() {
    if (m_old) {
      setenv("TZ", m_old->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    ForgetZone();
  }
  ZoneGuard(const ZoneGuard&) = delete;
  ZoneGuard& operator=(const ZoneGuard&) = delete;

 private:
  std::optional<std::string> m_old;
};
