/* Quor: tracing for any application. C interface.
 *
 * Shape    An application names itself once, declares its trace points (component and category) as
 *          static objects, and traces at a severity. Texts are UTF-8; times are taken inside.
 * Owner    A quor_point lives as long as the program (static storage); the library keeps its
 *          address. Texts are copied.
 * Errors   Nothing fails towards the application: what cannot be delivered is counted, and the
 *          monitor shows the count where it happened.
 * Threads  Every function may be called from any thread, in a signal handler (quor_trace with a
 *          ready text), after fork, and before and after main.
 *
 * A point that is off costs one relaxed load and a branch; its arguments are not evaluated when
 * the macros are used.
 */
#ifndef QUOR_QUOR_H
#define QUOR_QUOR_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#define QUOR_API
#else
#define QUOR_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Severity: exactly one. Attributes: any. The same bits switch a point on. */
enum {
  QUOR_INFO = 0x0001,
  QUOR_WARN = 0x0002,
  QUOR_ERROR = 0x0004,
  QUOR_DEVELOPER = 0x0008,
  QUOR_VERBOSE = 0x0010,
  QUOR_LOCATION = 0x0100, /* settings only: record source file and line */
  QUOR_STACK = 0x0200,    /* settings only: record the call stack */
  QUOR_UNREGISTERED = 0x80000000u
};

/* One trace point. Make it with QUOR_POINT; the fields are the library's. */
typedef struct quor_point {
  uint32_t settings; /* read relaxed, written by the library only */
  uint32_t id;
  const char* component;
  const char* category;
  struct quor_point* next;
} quor_point;

#define QUOR_POINT_INIT(component, category) {QUOR_UNREGISTERED, 0, (component), (category), NULL}

/* Names the application and makes it known to the service: its trace map can then be seen and
 * switched before the first trace. Without it the name is that of the executable. */
QUOR_API void quor_application(const char* name);
/* Enters the point into the trace map. Happens by itself at its first use. */
QUOR_API void quor_register(quor_point* point);
/* Names this thread in its traces, instead of its kernel id. */
QUOR_API void quor_thread_name(const char* name);

/* Traces a text of `length` bytes if the point is on for `attributes`. */
QUOR_API void quor_trace(quor_point* point, unsigned attributes, const char* file, unsigned line,
                         const char* text, size_t length);
/* The same with printf's format. */
QUOR_API void quor_tracef(quor_point* point, unsigned attributes, const char* file, unsigned line,
                          const char* format, ...) __attribute__((format(printf, 5, 6)));

/* Waits until what was traced has left the process or `milliseconds` have passed. Not needed for
 * delivery to a running service: for programs that end a machine, and for tests. 1 when all left. */
QUOR_API int quor_flush(unsigned milliseconds);

/* Counters of this process, exact. sent + lost = traced. */
typedef struct quor_counts {
  uint64_t traced; /* calls that passed their point's settings */
  uint64_t lost;   /* dropped because the ring was full or a file could not be written */
} quor_counts;
QUOR_API void quor_get_counts(quor_counts* counts);

static inline int quor_on(const quor_point* point, unsigned attributes) {
  const uint32_t settings = __atomic_load_n(&point->settings, __ATOMIC_RELAXED);
  return (settings & attributes) == attributes || (settings & QUOR_UNREGISTERED) != 0;
}

/* Declares a point: QUOR_POINT(net_connect, "Net", "Connect"); */
#define QUOR_POINT(name, component, category) \
  static quor_point name = QUOR_POINT_INIT(component, category)

/* Trace a printf-like text. Nothing is evaluated while the point is off. */
#define QUOR_TRACE_AT(point, attributes, ...)                                    \
  do {                                                                           \
    if (__builtin_expect(quor_on(&(point), (attributes)), 0))                    \
      quor_tracef(&(point), (attributes), __FILE__, __LINE__, __VA_ARGS__);      \
  } while (0)
#define QUOR_TRACE_INFO(point, ...) QUOR_TRACE_AT(point, QUOR_INFO, __VA_ARGS__)
#define QUOR_TRACE_WARN(point, ...) QUOR_TRACE_AT(point, QUOR_WARN, __VA_ARGS__)
#define QUOR_TRACE_ERROR(point, ...) QUOR_TRACE_AT(point, QUOR_ERROR, __VA_ARGS__)

#ifdef __cplusplus
}
#endif
#endif
