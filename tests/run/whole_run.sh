#!/usr/bin/env bash
# The whole program as a user has it: a real X server, a window manager, a real file, real keys.
#
#   whole_run.sh TESSERA TRC [PICTURE_FOLDER]
#
# Starts a server and a window manager of its own, so that it neither needs nor touches a display.
# Ends with status 0 when every step did what it should; otherwise it says which did not.
set -euo pipefail

tessera=$(realpath "$1")
trc=$(realpath "$2")
quord=$(dirname "$trc")/quord demo=$(dirname "$trc")/quor-demo
here=$(dirname "$(realpath "$0")")
for tool in Xvfb openbox xdotool import convert identify xprop xauth xkbcomp dbus-daemon; do
  command -v "$tool" >/dev/null || { echo "whole_run: $tool is not installed" >&2; exit 2; }
done
for program in "$quord" "$demo"; do
  [ -x "$program" ] || { echo "whole_run: $program is not built" >&2; exit 2; }
done
/usr/bin/python3 -c 'import gi; gi.require_version("Atspi", "2.0")' 2>/dev/null ||
  { echo "whole_run: python3-gi or gir1.2-atspi-2.0 is not installed" >&2; exit 2; }

# Of digits, so that a path is typed without Shift, which a busy server may apply to another letter.
work=${TMPDIR:-/tmp}/tessera-run-$$-$RANDOM
mkdir -m 700 "$work"
pictures=${3:-$work/pictures}
mkdir -p "$pictures"
started=()
end() {
  for process in "${started[@]}"; do kill "$process" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap end EXIT

source "$here/steps.sh"

start_display
export XDG_CONFIG_HOME=$work/config HOME=$work
unset WAYLAND_DISPLAY QT_QPA_PLATFORM
export LSAN_OPTIONS=suppressions=$here/leaks.supp:print_suppressions=0
"$trc" gen --records 20000 --seed 3 "$work/web.trc" >/dev/null
"$trc" gen --records 3000 --seed 4 "$work/worker.trc" >/dev/null

# RUN_PARTS names some of them, while one is written.
for part in ${RUN_PARTS:-with_a_file tree bare ends conversion screen_reader list filter_line config wizard}; do
  source "$here/$part.sh"
done
say "done: ${RUN_PARTS:-all steps}"
