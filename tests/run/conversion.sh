# What ends the program from outside while it converts an older file is no Cancel: the old file stays.

"$trc" gen --old --records 2000000 --seed 5 "$work/large.trc" >/dev/null
cp "$work/large.trc" "$work/kept"

# Opens the large file, says Yes, waits until the conversion is under way, and halts it there: how
# fast a machine converts shall not decide whether there is something left to end.
start_conversion() {
  "$tessera" "$work/large.trc" 2>"$work/stderr" &
  program=$!
  started+=("$program")
  until_true "no question about the older file" is_active '^Tessera$'
  key alt+y
  until_true "the conversion did not begin" halted_with_a_temporary_file
  [ -e "$work/large.trc.tmp" ] && [ ! -e "$work/large.trc.old" ] && return
  kill -CONT "$program"
  fail "the conversion was over before it could be halted: the file is too small for this machine"
}
halted_with_a_temporary_file() { [ -e "$work/large.trc.tmp" ] && kill -STOP "$program"; }
old_file_is_kept() {
  cmp -s "$work/large.trc" "$work/kept" || fail "$1: the old file is not what it was"
  [ ! -e "$work/large.trc.tmp" ] || fail "$1: the temporary file stays"
  [ ! -e "$work/large.trc.old" ] || fail "$1: the old file has another name"
}

for signal in TERM INT HUP; do
  start_conversion
  kill -"$signal" "$program"
  kill -CONT "$program"
  ended_with 0
  old_file_is_kept "$signal"
done

# The display goes, as it does when a session ends without a word.
(
  started=()
  end_display() { for process in "${started[@]}"; do kill "$process" 2>/dev/null || true; done; }
  trap end_display EXIT
  rm "$work/number"
  start_display
  server=${started[0]}
  start_conversion
  kill "$server"
  kill -CONT "$program"
  until_true "the program did not end without its display" is_gone
  old_file_is_kept "the display"
)
say "conversions ended from outside: good"
