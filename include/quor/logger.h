/* The point of a logger of another library, for the adapters: spdlog.hpp, qt.hpp, glib.h. */
#ifndef QUOR_LOGGER_H
#define QUOR_LOGGER_H

#include <string.h>

#include "quor.h"

#ifdef __cplusplus
extern "C" {
#endif

/* "orders.db.pool" is component "orders", category "db.pool"; "orders" alone has the category
 * "Log". A logger without a name is component "Log", with `library` as its category. */
static inline quor_point* quor_logger_point(const char* name, size_t length, const char* library) {
  const char* const dot = length != 0 ? (const char*)memchr(name, '.', length) : NULL;
  const size_t first = dot ? (size_t)(dot - name) : length;
  if (length == 0) return quor_named_point("Log", 3, library, strlen(library));
  if (first == 0 || first + 1 >= length) return quor_named_point(name, length, "Log", 3);
  return quor_named_point(name, first, dot + 1, length - first - 1);
}

#ifdef __cplusplus
}
#endif
#endif
