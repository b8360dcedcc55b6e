#!/bin/sh
# lttng_peer.sh PROGRAM: runs the LTTng-UST peer in a recording session of its own and prints what it
# prints: the nanoseconds per event. Prints nothing when there is no session daemon.
set -eu
home=$(mktemp -d)
export LTTNG_HOME="$home" LTTNG_RUNDIR="$home/run" LTTNG_UST_REGISTER_TIMEOUT=-1
command -v lttng-sessiond >/dev/null && command -v lttng >/dev/null || exit 0
lttng-sessiond --no-kernel --quiet >/dev/null 2>&1 &
daemon=$!
trap 'kill "$daemon" 2>/dev/null; wait "$daemon" 2>/dev/null || true; rm -rf "$home"' EXIT
tries=0
until lttng --no-sessiond list >/dev/null 2>&1; do
  tries=$((tries + 1))
  [ "$tries" -lt 100 ] || exit 0
  sleep 0.1
done
{
  lttng --no-sessiond create bench --output="$home/traces"
  lttng --no-sessiond enable-channel --userspace --discard --subbuf-size=16M --num-subbuf=4 bench
  lttng --no-sessiond enable-event --userspace --channel=bench 'quor_bench:text'
  lttng --no-sessiond start
} >/dev/null 2>&1
"$1"
lttng --no-sessiond destroy bench >/dev/null 2>&1 || true
