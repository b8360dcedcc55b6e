/* A traced program in C: names itself, declares its trace points, traces. */
#include <stdio.h>
#include <string.h>

#include <quor/quor.h>

QUOR_POINT(net_connect, "Net", "Connect");
QUOR_POINT(db_query, "Database", "Query");

int main(void) {
  const char ready[] = "ready";
  quor_counts counts;

  quor_application("orders");
  quor_trace(&net_connect, QUOR_INFO, __FILE__, __LINE__, ready, strlen(ready));
  QUOR_TRACE_INFO(net_connect, "connected to %s in %d ms", "db.example.com", 12);
  QUOR_TRACE_WARN(db_query, "query %d took %.1f s", 7, 2.5);
  QUOR_TRACE_ERROR(db_query, "query %d failed", 8);
  QUOR_TRACE_AT(db_query, QUOR_INFO | QUOR_DEVELOPER, "for developers: off until switched on");

  quor_get_counts(&counts);
  printf("traced %lu, lost %lu\n", (unsigned long)counts.traced, (unsigned long)counts.lost);
  return 0;
}
