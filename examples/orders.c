/* A traced program in C: names itself, declares its trace points, traces. */
#include <stdio.h>
#include <string.h>

#include <quor/quor.h>

QUOR_POINT(net_connect, "Net", "Connect");
QUOR_POINT(db_query, "Database", "Query");

static void query(int number) {
  QUOR_BLOCK(db_query, "query %d", number);
  QUOR_TRACE_AT(db_query, QUOR_INFO | QUOR_DEVELOPER, "for developers: off until switched on");
  if (number > 1) QUOR_TRACE_ERROR(db_query, "query %d failed", number);
}

int main(void) {
  const char ready[] = "ready";
  quor_counts counts;

  quor_application("orders");
  quor_trace(&net_connect, QUOR_INFO, __FILE__, __LINE__, ready, strlen(ready));
  QUOR_TRACE_WARN(net_connect, "connected to %s in %.1f s", "db.example.com", 2.5);
  query(2);

  quor_get_counts(&counts);
  printf("traced %lu, lost %lu\n", (unsigned long)counts.traced, (unsigned long)counts.lost);
  return 0;
}
