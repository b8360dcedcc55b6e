/* One event with a text, for the comparison with LTTng-UST. Included several times by its macros.
 */
#undef LTTNG_UST_TRACEPOINT_PROVIDER
#define LTTNG_UST_TRACEPOINT_PROVIDER quor_bench
#undef LTTNG_UST_TRACEPOINT_INCLUDE
#define LTTNG_UST_TRACEPOINT_INCLUDE "bench/lttng_peer.h"
#if !defined(QUOR_BENCH_LTTNG_PEER_H) || defined(LTTNG_UST_TRACEPOINT_HEADER_MULTI_READ)
#define QUOR_BENCH_LTTNG_PEER_H
#include <lttng/tracepoint.h>
LTTNG_UST_TRACEPOINT_EVENT(quor_bench, text, LTTNG_UST_TP_ARGS(const char*, text, size_t, length),
                           LTTNG_UST_TP_FIELDS(lttng_ust_field_sequence_text(char, text, text,
                                                                             size_t, length)))
#endif
#include <lttng/tracepoint-event.h>
