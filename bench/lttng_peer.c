/* The nanoseconds that an enabled LTTng-UST event with a text of 100 bytes costs, in bursts with
 * pauses, so that its consumer keeps up. */
#define LTTNG_UST_TRACEPOINT_CREATE_PROBES
#define LTTNG_UST_TRACEPOINT_DEFINE
#include "bench/lttng_peer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { kBursts = 40, kBurst = 20000, kTextBytes = 100 };

static double NowNs(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec * 1e9 + (double)time.tv_nsec;
}

static int Ascending(const void* a, const void* b) {
  const double x = *(const double*)a, y = *(const double*)b;
  return x < y ? -1 : x > y;
}

int main(void) {
  const struct timespec pause = {0, 20 * 1000 * 1000};
  double perEvent[kBursts];
  char text[kTextBytes];
  int burst, i;
  memset(text, 'x', sizeof text);
  if (!lttng_ust_tracepoint_enabled(quor_bench, text)) return 1;
  for (burst = 0; burst < kBursts; ++burst) {
    const double start = NowNs();
    for (i = 0; i < kBurst; ++i) lttng_ust_tracepoint(quor_bench, text, text, sizeof text);
    perEvent[burst] = (NowNs() - start) / kBurst;
    nanosleep(&pause, NULL);
  }
  qsort(perEvent, kBursts, sizeof perEvent[0], Ascending);
  printf("%f\n", perEvent[kBursts / 2]);
  return 0;
}
