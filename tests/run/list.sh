# The list by keyboard alone: filter, find, properties, source, a saved selection, export. What it
# shows and writes is compared with what trc gives for the same file and filter.

info="All Severities/Info" word=answer
# column NAME [FILE]: that column of the traces that pass the filter, a line each.
column() {
  "$trc" dump --uncheck "$info" --columns "$1" "${2:-$work/list.trc}" | tail -n +2 |
    sed 's/^ *//; s/ *$//'
}
# cell_of COLUMN ROW: rows count from 0.
cell_of() { column "$1" | sed -n "$(($2 + 1))p"; }
# hit NUMBER: the row of the NUMBERth text behind row 0 that has the word.
hit() { column Trace | tail -n +2 | grep -n "$word" | sed -n "$1s/:.*//p"; }
# closes WINDOW KEY...: the keys take it away, and the list has the keyboard again.
closes() {
  key "${@:2}"
  until_true "${*:2} did not close $1" has_no_window "^$1\$"
  until_true "the list has no keyboard after $1" says Traces focus
}

"$trc" gen --records 4000 --seed 5 "$work/list.trc" >/dev/null
# All as at a first start.
export XDG_CONFIG_HOME=$work/list-config XDG_STATE_HOME=$work/list-state
cd "$work" || fail "no folder"            # where no source file of the traces stands
start_reader
# start_at_row_0 ROWS
start_at_row_0() {
  start_program "$work/list.trc"
  until_true "the list does not have $1 rows" says "$1" rows
  key Home
  until_true "Home does not select the first row" row_is 0 "focused selected"
}
start_at_row_0 4000

# Filter: Info is unchecked; its rows go, and the first of the others takes the selection.
shown=$(column Count | wc -l)
[ "$shown" -gt 50 ] && [ "$shown" -lt 400 ] || fail "the file is no good for this: $shown rows"
opens Filter alt+v l
picture list-filter
key Right Down Right Down space
closes Filter Return
until_true "the list does not have $shown rows" says "$shown" rows
until_true "the pane does not say FILTERED" says FILTERED pane Filter
until_true "the nearest row is not selected" row_is 0 "focused selected"
for row in 0 "$((shown - 1))"; do
  says "$(cell_of Trace "$row")" cell "$row" Trace || fail "row $row says: $(reader cell "$row" Trace)"
done

# Find and Find Next: the focus goes from hit to hit; the selection stays.
opens Find ctrl+f
types "$word" "Search Text"
closes Find Return
first=$(hit 1) second=$(hit 2)
until_true "the focus is not on the first hit, row $first" row_is "$first" focused
row_is 0 selected || fail "the find moved the selection: row 0 is '$(reader row 0)'"
key F3
until_true "F3 did not go to the second hit, row $second" row_is "$second" focused
row_is "$first" "" || fail "the first hit is still '$(reader row "$first")'"
picture list-found

# Properties: of the focused row; Next and Back walk and take the selection with them.
field_is() { says "$(cell_of "$1" "$2")" value "$1"; }
opens "Trace Properties" alt+p
for name in Count Source Machine; do
  field_is "$name" "$second" || fail "$name: $(reader value "$name")"
done
# walked KEY ROW: the key shows that row's trace and selects it beside row 0, which was before.
walked() {
  key "$1"
  until_true "$1 does not show the trace of row $2" field_is Count "$2"
  says "0,$2" selected || fail "$1 leaves selected: $(reader selected)"
}
walked Return "$((second + 1))"
walked alt+b "$second"
walked alt+b "$((second - 1))"
picture list-properties
closes "Trace Properties" Escape

# Goto Source: the first file is asked for, the next one of the same tree is found without.
sources=$work/checkout
# make_source ROW: the file that its trace names, whose lines say which they are.
make_source() {
  local source
  source=$(cell_of Source "$1")
  mkdir -p "$(dirname "$sources/$source")"
  seq -f "line %g of ${source%:*}" 400 >"$sources/${source%:*}"
}
# at_source ROW: the window in front has its caret on the line that the trace names.
at_source() {
  local source
  source=$(cell_of Source "$1")
  says "${source##*:} line ${source##*:} of ${source%:*}" line Source
}
for row in "$first" "$second"; do make_source "$row"; done
[ "$(cell_of Source "$first")" != "$(cell_of Source "$second")" ] || fail "both hits have one source"
opens "Locate source file" ctrl+g
source=$(cell_of Source "$second")
types "$sources/${source%:*}" "File name:"
key Return
until_true "the source of row $second is not to be seen" at_source "$second"
for pane in Rows Filter; do
  until_true "the pane $pane is not cleared for a source" says "" pane "$pane"
done
picture list-source
key ctrl+F4
until_true "the list has no keyboard after the source" says Traces focus
key Home
for ((row = 0; row < first; ++row)); do key Down; done
until_true "Down did not reach row $first" row_is "$first" "focused selected"
key ctrl+g
until_true "the source of row $first is not to be seen" at_source "$first"
has_no_window "Locate source file" || fail "the second file was asked for"
key ctrl+F4
until_true "the list has no keyboard after the second source" says Traces focus

# Save: the selected rows.
key shift+Down shift+Down
until_true "the selection did not grow to row $((first + 2))" row_is "$((first + 2))" "focused selected"
opens "Save As" ctrl+s
types "$work/selection.trc" "File name:"
for control in "Trace Files (*.trc)" Save Cancel "Only save selected items"; do
  key Tab
  until_true "Tab does not go to $control" says "$control" focus
done
key space
closes "Save As" Return
selection_is_right() {
  local name
  for name in Count Time Attributes TID Trace Source Stack; do
    [ "$(column "$name" "$work/selection.trc")" = \
      "$(column "$name" | sed -n "$((first + 1)),$((first + 3))p")" ] || return 1
  done
}
until_true "the saved selection is not what was selected" selection_is_right

# Export: byte for byte what trc writes.
opens "Export" alt+f e
types "$work/list.csv" "File name:"
closes "Export" Return
"$trc" export --uncheck "$info" "$work/list.trc" "$work/wanted.csv" >/dev/null
[ "$(wc -l <"$work/wanted.csv")" -gt "$shown" ] || fail "trc exported too little"
until_true "the export differs from that of trc" cmp "$work/list.csv" "$work/wanted.csv"
key alt+F4
ended_with 0

# An end in the midst of a command, whose dialog is up. The file comes back as it was left: filtered.
for command in "Filter:alt+v l" "Trace Properties:alt+p" "Locate source file:ctrl+g" "Export:alt+f e"; do
  start_at_row_0 "$shown"
  read -ra keys <<<"${command#*:}"
  opens "${command%%:*}" "${keys[@]}"
  kill -TERM "$program"
  ended_with 0
done
say "the list, its dialogs and its files: good"
