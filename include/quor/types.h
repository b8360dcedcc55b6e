/* The constants and structures of quor.h: include that one. */
#ifndef QUOR_TYPES_H
#define QUOR_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Severity: exactly one. Attributes: any. The same bits switch a point on. */
#define QUOR_INFO 0x0001u
#define QUOR_WARN 0x0002u
#define QUOR_ERROR 0x0004u
#define QUOR_DEVELOPER 0x0008u
#define QUOR_VERBOSE 0x0010u
#define QUOR_LOCATION 0x0100u /* settings only: record source file and line */
#define QUOR_STACK 0x0200u    /* settings only: record the call stack */
/* The settings of a point that the library has not seen yet: every bit. */
#define QUOR_UNREGISTERED 0xFFFFFFFFu

/* One trace point. Make it with QUOR_POINT; the fields are the library's. */
typedef struct quor_point {
  uint32_t settings; /* read relaxed, written by the library only */
  uint32_t id;
  uint16_t names[2]; /* of component and category, as in a record */
  uint32_t reserved;
  const char* component;
  const char* category;
  struct quor_point* next;
} quor_point;

#define QUOR_POINT_INIT(component, category) \
  { QUOR_UNREGISTERED, 0, {0, 0}, 0, (component), (category), NULL }

/* A block that has begun; the fields are the library's. */
typedef struct quor_block {
  quor_point* point; /* NULL: there is nothing to end */
  const char* file;
  unsigned attributes;
  unsigned line;
  size_t length;
  char* allocated;
  char room[248];
} quor_block;

/* Counters of this process, exact while no thread traces: traced = lost + delivered (now or later).
 */
typedef struct quor_counts {
  uint64_t traced; /* calls that passed their point's settings, and the library's own traces */
  uint64_t lost;   /* there was no ring, it was full, or a file could not be written */
} quor_counts;

/* Of tokens, after their macros are replaced. */
#define QUOR_JOIN_(a, b) a##b
#define QUOR_JOIN(a, b) QUOR_JOIN_(a, b)

#ifdef __cplusplus
}
#endif
#endif
