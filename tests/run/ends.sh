# Other ends: signals, a bad file, no display, options of the command line.

for signal in TERM INT; do
  start_program "$work/worker.trc"
  kill -"$signal" "$program"
  ended_with 0
done

# An open dialog does not hold up the end.
start_program "$work/worker.trc"
key F1
until_true "F1 opened no help" is_active 'Tessera Help'
key Escape
until_true "the main window is not active after the help" is_active '^Tessera$'
key alt+h
key a
until_true "Alt+H, A opened no About" is_active '^About Tessera$'
kill -TERM "$program"
ended_with 0

# A file that is none: its box, and then the program ends.
printf 'no trace file at all' >"$work/bad.trc"
"$tessera" "$work/bad.trc" 2>"$work/stderr" &
program=$!
started+=("$program")
until_true "no box for a bad file" is_active '^Tessera$'
picture bad-file
key Return
ended_with 2

# Wrong use, and what cannot be opened: a word that says what and why, and a status.
# told WORDS ARGUMENT...
told() {
  local words=$1 status=0
  shift
  "$tessera" "$@" 2>"$work/stderr" || status=$?
  [ "$status" -eq 2 ] || fail "$*: status $status"
  grep -qF -- "$words" "$work/stderr" || fail "$*: no word of '$words'"
}
mkdir "$work/folder.trc"
: >"$work/empty.trc"
mkfifo "$work/pipe.trc"
truncate -s 5G "$work/huge.trc"
told "$work/none.trc: No such file or directory" "$work/none.trc"
for wrong in folder empty pipe huge; do
  told "$work/$wrong.trc: " "$work/$wrong.trc"
done
told "unknown option --colour" --colour "$work/web.trc"
told "one FILE at a time" "$work/web.trc" "$work/worker.trc"
told "--settings wants a file: $work" --settings "$work" "$work/web.trc"
told "no trace service on localhost:1" --monitor localhost:1

# Without a display there is a word and a status.
status=0
env -u DISPLAY "$tessera" 2>"$work/stderr" || status=$?
[ "$status" -eq 2 ] || fail "no display gave status $status"
grep -q 'no display' "$work/stderr" || fail "no word about the missing display"
status=0
DISPLAY=:987654 "$tessera" 2>"$work/stderr" || status=$?
[ "$status" -eq 2 ] || fail "a display that cannot be reached gave status $status"

env -u DISPLAY "$tessera" --version | grep -qx 'Tessera Version 3.1.0' || fail "--version"
env -u DISPLAY "$tessera" --help | grep -q '^usage: tessera' || fail "--help"
manual=$here/../../packaging/man/tessera.1
for option in $(env -u DISPLAY "$tessera" --help | grep -oE '^  (-h, )?--[a-z]+' | grep -oE -- '--[a-z]+'); do
  tr -d '\\' <"$manual" | grep -qF -- "$option" || fail "the manual does not tell of $option"
done
env -u DISPLAY "$tessera" --render "$pictures/render.png" --size 900x600 "$work/web.trc" \
  2>"$work/stderr" || fail "--render without a display"
[ "$(identify -format '%wx%h' "$pictures/render.png")" = 900x600 ] || fail "--render: its size"
say "signals, bad files, no display, options: good"
