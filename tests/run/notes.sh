# Marks and notes of an open file, and what becomes of them: the program is killed while it saves
# them, and the trace file is moved, cut and replaced between two runs of it.

# ---- killed while it saves

# Many rows, so that a save takes long enough to be met.
marked=$work/marked.trc
notes=$marked.notes
rows=120000 least_rounds=15 most_rounds=60
"$trc" gen --records "$rows" --seed 9 "$marked" >/dev/null
cp "$marked" "$work/marked.before"
export XDG_CONFIG_HOME=$work/notes-config XDG_STATE_HOME=$work/notes-state
start_reader

# Only words of the shell: a process that is started takes longer than a save may.
wait_us() {
  local until=$((${EPOCHREALTIME/./} + $1))
  while [ "${EPOCHREALTIME/./}" -lt "$until" ]; do :; done
}
has_part() {
  local part
  for part in "$work/.marked.trc.notes.$program."*; do [ -e "$part" ] && return; done
  return 1
}
wait_for_part() {
  local deadline=$((SECONDS + 60))
  until has_part; do [ "$SECONDS" -lt "$deadline" ] || fail "the notes are not being saved"; done
}
# marks_all COLOUR: selects all rows of a program that was just started, and marks them.
marks_all() {
  start_program "$marked"
  until_true "the list does not have its rows" says "$rows" rows
  key Home shift+End
  until_true "not all rows are selected" row_is "$((rows - 1))" "focused selected"
  key "ctrl+alt+$1"
}
in_colour() { sed "s/\"mark\": [1-9]/\"mark\": $1/" "$work/notes.of1"; }

# Once to the end: what a whole file is.
marks_all 1
wait_for_part
key alt+F4
ended_with 0
cp "$notes" "$work/notes.of1"
[ "$("$trc" notes "$marked" | grep -c '^[0-9]*: 1 ')" -eq "$rows" ] || fail "not all rows are marked"

# How long a save takes is learned: the next kill comes sooner after one that was too late, and later
# after one that was early, at a random moment of that span.
round=0 olds=0 news=0 colour=1 span=10000
until [ "$round" -ge "$least_rounds" ] && [ "$olds" -gt 0 ] && [ "$news" -gt 0 ]; do
  round=$((round + 1))
  [ "$round" -le "$most_rounds" ] || fail "$most_rounds kills: $olds old files, $news new ones"
  next=$((colour % 9 + 1))
  marks_all "$next"
  wait_for_part
  wait_us $(((RANDOM * 32768 + RANDOM) % span))
  kill -KILL "$program"
  wait "$program" 2>/dev/null || true
  if cmp -s "$notes" <(in_colour "$next"); then
    news=$((news + 1)) colour=$next span=$((span * 3 / 4 + 100))
  elif cmp -s "$notes" <(in_colour "$colour"); then
    olds=$((olds + 1)) span=$((span * 3 / 2 + 100))
  else
    fail "round $round: the notes are neither the old ones nor the new ones"
  fi
  cmp "$marked" "$work/marked.before" || fail "round $round: the trace file has changed"
done
say "killed in $round saves: $olds old files of notes and $news new ones, all whole: good"

# ---- moved, cut and replaced

# listed ROW: what the pane says of it, without the time.
listed() { reader cells "Marks and notes" | sed -n "$1p" | cut -d'|' -f1,2,4-; }
lists() { [ "$(listed "$1")" = "$2" ]; }
text_of() { "$trc" dump "$1" --from "$2" --count 1 --columns Trace | tail -n 1 | sed 's/^ *//; s/ *$//'; }
# opens_marks FILE: with the pane of marks, which the file's view brings back or not.
opens_marks() {
  start_program "$1"
  until_true "the list of $1 is not to be seen" says Traces focus
  reader cells "Marks and notes" >/dev/null || key ctrl+shift+m
  until_true "there is no pane of marks" reader cells "Marks and notes"
}
closes_program() {
  key alt+F4
  ended_with 0
}

mkdir "$work/here" "$work/there"
file=$work/here/web.trc
"$trc" gen --records 3000 --seed 10 "$file" >/dev/null
cp "$file" "$work/whole.trc"
opens_marks "$file"
key Home ctrl+alt+3
until_true "row 0 is not listed" lists 1 "3 Yellow|0||$(text_of "$file" 0)"
opens Note ctrl+shift+d
xdotool type --clearmodifiers "a note"
key ctrl+Return
until_true "Ctrl+Enter did not close the note" has_no_window '^Note$'
until_true "the note is not listed" lists 1 "3 Yellow|0|a note|$(text_of "$file" 0)"
key End ctrl+alt+5
until_true "the last row is not listed" lists 2 "5 Teal|2999||$(text_of "$file" 2999)"
picture notes-listed
closes_program
cmp "$file" "$work/whole.trc" || fail "the trace file of the marks has changed"

mv "$work/here/web.trc" "$work/here/web.trc.notes" "$work/there"
file=$work/there/web.trc
opens_marks "$file"
until_true "the marks were not found with the moved file" lists 2 "5 Teal|2999||$(text_of "$file" 2999)"
closes_program

# Cut: what is beyond the end is said, kept, and back with the whole file.
truncate -s $(($(stat -c %s "$file") / 2)) "$file"
opens_marks "$file"
until_true "the mark beyond the end is not told" lists 2 "5 Teal|2999||(beyond the end of the file)"
lists 1 "3 Yellow|0|a note|$(text_of "$file" 0)" || fail "the first row of the cut file: $(listed 1)"
key Home Down ctrl+alt+7
until_true "row 1 of the cut file is not listed" lists 2 "7 Violet|1||$(text_of "$file" 1)"
picture notes-cut
closes_program
cp "$work/whole.trc" "$file"
opens_marks "$file"
until_true "the whole file has not all marks" lists 3 "5 Teal|2999||$(text_of "$file" 2999)"
lists 2 "7 Violet|1||$(text_of "$file" 1)" || fail "the mark of the cut file: $(listed 2)"
closes_program

# Replaced: stale, shown, applied to nothing, and the notes file stays as it was.
"$trc" gen --records 3000 --seed 11 "$file" >/dev/null
cp "$file.notes" "$work/notes.before"
opens_marks "$file"
until_true "the stale note is not told" lists 1 "3 Yellow|0|a note|(stale: of another trace file)"
picture notes-stale
closes_program
cmp "$file.notes" "$work/notes.before" || fail "stale notes were written"
say "notes of a moved, a cut and a replaced file: good"
