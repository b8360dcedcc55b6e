# What is found and kept, by keyboard alone: hits counted and listed, statistics that filter, rows that
# are copied, the details of a trace; then the view that comes back, and a profile.

file=$work/again.trc
"$trc" gen --records 6000 --seed 9 "$file" >/dev/null
# All as at a first start.
export XDG_CONFIG_HOME=$work/again-config XDG_STATE_HOME=$work/again-state
cd "$work" || fail "no folder"
start_reader

column() { "$trc" dump --columns "$1" "${@:2}" "$file" | tail -n +2 | sed 's/^ *//; s/ *$//'; }
row_has_focus() { [[ "$(reader row "$1")" == focused* ]]; }
focus_is() { until_true "$2 does not lead to $1, but to '$(reader focus)'" says "$1" focus; }
no_question() { ! reader "$@"; }
# in_force TEXT: the line says it, and the list has as many rows as trc finds.
in_force() {
  until_true "the line does not say '$1', but '$(reader value "Filter text")'" says "$1" value "Filter text"
  until_true "the list does not show '$1'" says "$(column Count --where "$1" | wc -l)" rows
}

start_program "$file"
until_true "the list does not have its rows" says 6000 rows
key Home
at_row 0 Home

# Find: the hits are counted, and listed with the keyboard in the list; Enter there goes to the row.
word=bytes
mapfile -t hits < <("$trc" find --format jsonl "$word" "$file" | jq .i)
[ "${hits[0]}" -gt 0 ] && [ "${#hits[@]}" -gt 100 ] || fail "the file is no good for this: ${#hits[@]} hits"
grouped=$(sed "s/\([0-9]\)\(...\)\$/\1,\2/" <<<"${#hits[@]}")
opens Find ctrl+f
types "$word" "Search Text"
key Return
until_true "Enter did not close Find" has_no_window '^Find$'
until_true "the message is '$(reader pane Message)'" says "1 of $grouped hits" pane Message
key F3
until_true "the message behind F3 is '$(reader pane Message)'" says "2 of $grouped hits" pane Message
row_is "${hits[1]}" focused || fail "F3 did not go to row ${hits[1]}"
key ctrl+shift+f
until_true "Ctrl+Shift+F does not list the hits" says "${#hits[@]}" rows_of Hits
says Hits focus || key F6
focus_is Hits F6
for row in 0 1 2; do
  says "$((hits[row] + 1))" cell_of Hits "$row" Row || fail "hit $row is told as '$(reader cell_of Hits "$row" Row)'"
done
key Home Down Down Return
focus_is Traces "Enter in the list of hits"
until_true "Enter did not go to row ${hits[2]}, which is '$(reader row "${hits[2]}")'" row_has_focus "${hits[2]}"
picture reading-hits
key ctrl+shift+f
until_true "a second Ctrl+Shift+F did not put the list away" no_question rows_of Hits

# Statistics: the counts are those of trc; Enter filters by the value with the keyboard.
chooses alt+v "Statistics..."
until_true "no statistics open" is_active '^Statistics$'
first=$("$trc" stats "$file" --by component --top 1 --json)
count=$(jq .count <<<"$first" | sed 's/\(...\)$/,\1/; s/^,//')
counts_are() { [[ "$(reader tree_cells Statistics)" == "$(jq -r .value <<<"$first")"$'\n'"$count"$'\n'* ]]; }
until_true "the first row is not $first: $(reader tree_cells Statistics | head -2)" counts_are
is_counted() { reader all label | grep "^6,000 traces" >/dev/null; }
until_true "what is counted is not told" is_counted
until_true "the keyboard is not in the statistics" says Statistics focus
picture reading-statistics
key Down Up
until_true "no row is chosen" says yes enabled "push button" "Only This"
key Return
where=$(jq -r .where <<<"$first")
in_force "$where"
is_active '^Statistics$' || fail "Enter closed the statistics"
key Escape
until_true "Esc did not close the statistics" has_no_window '^Statistics$'
until_true "the main window is not active behind the statistics" is_active '^Tessera'
key alt+Left
until_true "Alt+Left does not bring all rows back" says 6000 rows

# Copies: pasted into a note, whose field says what was on the clipboard. As CSV by the menu, then in
# the form of the last time by the key.
# pasted TEXT: what is copied is this text.
pasted() {
  opens Note ctrl+shift+d
  key ctrl+v
  until_true "'$(reader value Note)' was copied, not '$1'" says "$1" value Note
  key Escape
  until_true "Esc did not close the note" has_no_window '^Note$'
}
go_to_row 101 100
key shift+Down shift+Down
until_true "Shift+Down did not select three rows" says 100,101,102 selected
chooses alt+e "Copy Rows As" JSON
pasted "$("$trc" dump --format jsonl --from 100 --count 3 "$file")"
go_to_row 301 300
key ctrl+shift+c
pasted "$("$trc" dump --format jsonl --from 300 --count 1 "$file")"
chooses alt+e "Copy Rows As" "Filter Text"
key ctrl+l
until_true "Ctrl+L does not lead to the line" says "Filter text" focus
key ctrl+a ctrl+v Return
one_row() { says 1 rows && says "$(column Trace --from 300 --count 1)" cell 0 Trace; }
until_true "the copied filter text shows $(reader rows) rows: $(reader value "Filter text")" one_row
key alt+Left
until_true "Alt+Left does not bring all rows back" says 6000 rows
key Escape
until_true "Esc does not lead to the rows" says Traces focus

# The details follow the keyboard; F6 leads there and Esc back.
go_to_row 8 7
key ctrl+i
for row in 7 8 9; do
  until_true "the details do not show row $row: $(reader value Text)" says "$(column Trace --from "$row" --count 1)" value Text
  reader tree_cells Fields | grep -xF "$(column Component --from "$row" --count 1)" >/dev/null ||
    fail "the fields of row $row: $(reader tree_cells Fields)"
  key Down
done
key F6
focus_is Fields F6
key Escape
focus_is Traces Escape
picture reading-details

# A view comes back: columns, filter text, the row, its mark, the details.
chooses alt+v "Time Columns" Delta
key ctrl+l
until_true "Ctrl+L does not lead to the line again" says "Filter text" focus
types "severity >= warn" "Filter text"
key Return
in_force "severity >= warn"
# Esc would put the line away, and its text with it.
to_rows() { key F6 && says Traces focus; }
until_true "F6 does not lead to the rows, but to '$(reader focus)'" to_rows
go_to_row 6 5
key ctrl+alt+5
has_mark() { [[ "$(reader words 5)" == *", Mark 5" ]]; }
until_true "no mark: $(reader words 5)" has_mark
headers=$(reader headers)
[[ "$headers" == *Delta* ]] || fail "there is no column Delta: $headers"
key alt+F4
ended_with 0
start_program "$file"
in_force "severity >= warn"
until_true "the columns are $(reader headers), not $headers" says "$headers" headers
at_row 5 "the view that came back"
until_true "no mark has come back: $(reader words 5)" has_mark
row=$("$trc" dump --where "severity >= warn" --format jsonl "$file" | sed -n 6p | jq -r .text)
until_true "the details do not show the row: $(reader value Text)" says "$row" value Text
focus_is Traces "the start"
picture reading-again

# A profile: saved by a name, away with Standard, applied by its name.
chooses alt+v Profiles "Save As..."
until_true "no dialog of profiles" is_active '^Profiles$'
types "loud ones" Name
key Return
saved() { reader all "list item" | grep -x "loud ones" >/dev/null; }
until_true "the dialog does not list the profile" saved
key Escape
until_true "Esc did not close the profiles" has_no_window '^Profiles$'
until_true "the main window is not active behind the profiles" is_active '^Tessera'
chooses alt+v "Time Columns" Delta
has_no_delta() { [[ "$(reader headers)" != *Delta* ]]; }
until_true "the column Delta is still there" has_no_delta
chooses alt+v Profiles Standard
until_true "Standard does not show all rows" says 6000 rows
chooses alt+v Profiles "loud ones"
in_force "severity >= warn"
until_true "the columns of the profile are $(reader headers), not $headers" says "$headers" headers
key alt+F4
ended_with 0
say "hits, statistics, copies, details and views: good"
