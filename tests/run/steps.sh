# The words in which the whole run is written. Waiting is always for a condition, with a deadline.

say() { printf 'whole_run: %s\n' "$*" >&2; }
fail() {
  say "FAILED: $*"
  [ -n "${DISPLAY:-}" ] && import -window root "$pictures/failed.png" 2>/dev/null || true
  [ -s "$work/stderr" ] && sed 's/^/  stderr: /' "$work/stderr" >&2
  exit 1
}

# until_true WHAT COMMAND...: tries for 20 seconds.
until_true() {
  local what=$1 deadline=$((SECONDS + 20))
  shift
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$deadline" ] || fail "$what"
    sleep 0.05
  done
}

# Without auto-repeat (-r): where the release of a key comes late, because the machine is busy, the
# server would type the letter several times, and a file would get another name.
start_display() {
  local number
  mkfifo "$work/number"
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset -r 3>"$work/number" 2>"$work/xvfb.log" &
  started+=($!)
  read -r -t 20 number <"$work/number" || fail "Xvfb did not come up"
  export DISPLAY=:$number
  openbox --sm-disable >"$work/openbox.log" 2>&1 &
  started+=($!)
  until_true "openbox did not come up" xprop -root _NET_SUPPORTING_WM_CHECK
  until_true "openbox does not manage windows" bash -c \
    'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 0x'
}

# A message bus of its own, from which the accessibility bus comes, and the word to programs that
# start from now on that a screen reader is there.
start_reader() {
  local address
  [ -z "${reader_started:-}" ] || return 0
  mkfifo "$work/address"
  dbus-daemon --session --nofork --nopidfile --print-address=3 3>"$work/address" 2>"$work/bus.log" &
  started+=($!)
  read -r -t 20 address <"$work/address" || fail "dbus-daemon did not come up"
  export DBUS_SESSION_BUS_ADDRESS=$address
  reader on || fail "there is no accessibility bus: $(cat "$work/reader.log")"
  reader_started=1
}
reader() { "$here/screen_reader.py" "$@" 2>"$work/reader.log"; }
# says TEXT QUESTION...: the answer is this text.
says() {
  local wanted=$1
  shift
  [ "$(reader "$@")" = "$wanted" ]
}

# Sets $program.
launch() {
  "$tessera" "$@" 2>"$work/stderr" &
  program=$!
  started+=("$program")
}
# Launches it and waits for its main window, $window.
start_program() {
  launch "$@"
  until_true "the main window does not stand or is not active" activate_main_window
}
# Launches it bare, as a new user does, and waits for the wizard.
start_wizard() {
  launch
  until_true "no wizard opens" is_active "^Trace Wizard: Welcome$"
  until_true "the wizard does not stand still" stands_still
}
# A dialog is moved once more when its parent's window comes late: a click would miss its button.
stands_still() {
  local place
  place=$(xdotool getactivewindow getwindowgeometry)
  sleep 0.3
  [ "$place" = "$(xdotool getactivewindow getwindowgeometry)" ]
}
# A window may go between the search and the next word about it, as one that only showed itself
# while the program started: then all of it is tried again.
activate_main_window() {
  window=$(main_window) && xdotool windowactivate "$window" && is_active "^Tessera"
}
main_window() { xdotool search --all --onlyvisible --pid "$program" --name '^Tessera( - .*)?$' | head -1 | grep .; }
active_name() { xdotool getactivewindow getwindowname; }
is_active() { active_name | grep -q "$1"; }
is_not_active() { ! is_active "$1"; }
has_window() { xdotool search --all --onlyvisible --pid "$program" --name "$1" | grep -q .; }
has_no_window() { ! has_window "$1"; }
is_gone() { ! kill -0 "$program" 2>/dev/null; }
key() { xdotool key --clearmodifiers "$@"; }
# opens WINDOW KEY...: the keys bring it up.
opens() {
  key "${@:2}"
  until_true "${*:2} opened no $1" is_active "^$1\$"
}
# chooses MENU ITEM...: by the arrow keys, so whatever letters the items have; the last one is run.
chooses() {
  local item way=(Home)
  key "$1"
  for item in "${@:2}"; do
    until_true "the menu does not offer $item" reader offered "$item"
    for ((; $(reader offered "$item") >= ${#way[@]}; )); do way+=(Down); done
    key "${way[@]}"
    until_true "the arrow keys did not reach $item, but '$(reader chosen)'" says "$item" chosen
    [ "$item" = "${*: -1}" ] && key Return || key Right
    way=(Home)
  done
}
# types TEXT FIELD: in place of what the field, which has the keyboard, holds. A display that is
# busy may give Shift to another letter than the one it was pressed for: then all is typed again.
types() { until_true "$2 does not hold what was typed" typed "$1" "$2"; }
typed() {
  local look
  key ctrl+a
  xdotool type --clearmodifiers "$1"
  for look in 1 2 3 4 5; do
    says "$1" value "$2" && return
    sleep 0.05
  done
  return 1
}
picture() { import -window root "$pictures/$1.png"; }

# ended_with STATUS: the program is gone, with that status.
ended_with() {
  local status=0
  until_true "the program did not end" is_gone
  wait "$program" || status=$?
  [ "$status" -eq "$1" ] || fail "exit status $status, not $1"
}

# setting SECTION NAME: what the settings file holds; the section is the key below the program's own.
settings_file() { printf '%s' "$XDG_CONFIG_HOME/tessera/settings.ini"; }
setting() {
  SECTION="[Software\\Zentara\\QuorTrace\\Tessera$1]" NAME="$2" awk '
    $0 == ENVIRON["SECTION"] { inside = 1; next }
    /^\[/ { inside = 0 }
    inside && index($0, ENVIRON["NAME"] "=") == 1 { print substr($0, length(ENVIRON["NAME"]) + 2) }
  ' "$(settings_file)"
}
# Switches the wizard off for programs that start bare, in settings that are still empty.
no_wizard() {
  mkdir -p "$(dirname "$(settings_file)")"
  printf '%s\n' '[Software\Zentara\QuorTrace\Tessera\Settings\Wizard]' 'Auto-start=0' >"$(settings_file)"
}
has_setting() { [ "$(setting "$1" "$2")" = "$3" ]; }

# row_is ROW WORDS: its state as a screen reader says it.
row_is() { says "$2" row "$1"; }
at_row() { until_true "$2: not at row $1, where '$(reader row "$1")' is said" row_is "$1" "focused selected"; }
# go_to_row NUMBER ROW: by the window for it.
go_to_row() {
  opens "Go to Row" ctrl+shift+g
  key ctrl+a
  xdotool type --clearmodifiers -- "$1"
  key Return
  until_true "Enter did not close Go to Row for $1" has_no_window '^Go to Row$'
  at_row "$2" "Go to Row $1"
}
