/* Quor: tracing for any application. C interface.
 *
 * Shape    An application names itself once, declares its trace points (component and category) as
 *          static objects, and traces at a severity. Texts are UTF-8. The library takes the time.
 * Owner    A quor_point lives as long as the program (static storage). The library keeps its
 *          address, and keeps the module that declares it loaded. Texts are copied.
 * Errors   No call fails. A trace that cannot be delivered is counted, and the monitor shows the
 *          count at the place of the missing trace.
 * Threads  Every function may be called from any thread, after fork, and before and after main.
 *          quor_trace may also be called in a signal handler, once the process has traced or named
 *          itself outside of one. No function changes errno.
 *
 * A point that is off costs one relaxed load and a branch; its arguments are not evaluated when
 * the macros are used.
 */
#ifndef QUOR_QUOR_H
#define QUOR_QUOR_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#include "types.h"
#include "version.h"

#define QUOR_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* A program that defines QUOR_DISABLE before it includes this header traces nothing: no argument is
 * evaluated, and the library is not needed. */
#ifdef QUOR_DISABLE
#include "no_traces.h"
#else

/* The settings that the first traces have, and where they go, may come from the environment:
 * QUOR_SETTINGS="Net=max;Db/Query=Info+Stack;*=support", QUOR_SINK="file:/tmp/x.trc?maxsize=10". */

/* Names the application and enters the declared points into its trace map, so that they can be seen
 * and switched before the first trace. Without this call the name is that of the executable. After
 * several calls the last name is used. */
QUOR_API void quor_application(const char* name);
/* Declares a point: quor_application, or the first trace of any point, will enter it into the trace
 * map. QUOR_POINT calls this. It starts nothing. */
QUOR_API void quor_declare(quor_point* point);
/* Enters the point into the trace map now. Its first use does so too. */
QUOR_API void quor_register(quor_point* point);
/* Registers the point and returns whether it is on: the slow path of quor_on. */
QUOR_API int quor_first_use(quor_point* point, unsigned attributes);
/* The point of these names, for names that are known at run time only. It is made once and lives as
 * long as the process; beyond 4,096 names, all share one that says so. Not in a signal handler. */
QUOR_API quor_point* quor_named_point(const char* component, size_t component_length,
                                      const char* category, size_t category_length);
/* Names this thread in its traces, instead of its kernel id. */
QUOR_API void quor_thread_name(const char* name);

/* Traces a text of `length` bytes if `attributes` are on in the point. `file` may be NULL. */
QUOR_API void quor_trace(quor_point* point, unsigned attributes, const char* file, unsigned line,
                         const char* text, size_t length);
/* The same with printf's format. */
QUOR_API void quor_tracef(quor_point* point, unsigned attributes, const char* file, unsigned line,
                          const char* format, ...) __attribute__((format(printf, 5, 6)));
/* The same for a function with "..." of its own, such as a log function that you have. */
QUOR_API void quor_vtracef(quor_point* point, unsigned attributes, const char* file, unsigned line,
                           const char* format, va_list arguments)
    __attribute__((format(printf, 5, 0)));

/* A block: its begin traces "Begin: TEXT", its end "End: TEXT", which a monitor shows as a branch
 * with its duration. Where both are in one scope, QUOR_BLOCK is shorter. Each begin needs an end,
 * which frees what a text beyond 240 bytes takes, and traces nothing if the begin did not. */
QUOR_API void quor_block_begin(quor_block* block, quor_point* point, unsigned attributes,
                               const char* file, unsigned line, const char* format, ...)
    __attribute__((format(printf, 6, 7)));
QUOR_API void quor_block_end(quor_block* block);

/* Waits until all traces have left the process, or until `milliseconds` have passed. Delivery to a
 * running service does not need it. It is for programs that shut a machine down, and for tests.
 * Returns 1 when all traces have left. */
QUOR_API int quor_flush(unsigned milliseconds);

/* What this process has traced and lost so far. */
QUOR_API void quor_get_counts(quor_counts* counts);

/* Is the point on for these attributes? The macros ask before they evaluate their arguments. */
static inline int quor_on(quor_point* point, unsigned attributes) {
  const uint32_t settings = __atomic_load_n(&point->settings, __ATOMIC_RELAXED);
  if (__builtin_expect((settings & attributes) != attributes, 1)) return 0;
  return settings != QUOR_UNREGISTERED || quor_first_use(point, attributes);
}

#endif

/* Declares a point at file scope: QUOR_POINT(net_connect, "Net", "Connect"); */
#ifndef __cplusplus
#define QUOR_POINT(name, component, category)                          \
  static quor_point name = QUOR_POINT_INIT(component, category);       \
  __attribute__((constructor)) static void name##_quor_declare(void) { \
    quor_declare(&name);                                               \
  }                                                                    \
  struct name##_quor_end
#endif

/* Traces a printf-like text. The arguments are not evaluated while the point is off. */
#define QUOR_TRACE_AT(point, attributes, ...)                               \
  do {                                                                      \
    if (quor_on(&(point), (attributes)))                                    \
      quor_tracef(&(point), (attributes), __FILE__, __LINE__, __VA_ARGS__); \
  } while (0)
#define QUOR_TRACE_INFO(point, ...) QUOR_TRACE_AT(point, QUOR_INFO, __VA_ARGS__)
#define QUOR_TRACE_WARN(point, ...) QUOR_TRACE_AT(point, QUOR_WARN, __VA_ARGS__)
#define QUOR_TRACE_ERROR(point, ...) QUOR_TRACE_AT(point, QUOR_ERROR, __VA_ARGS__)

#ifdef __cplusplus
}
#else
#include "block.h"
#endif
#endif
