# What makes a file easy to read, by keyboard alone: colours of rows, marks and notes, columns of times,
# going to a time or a row, the overview. What is heard is what trc gives for the same file.

file=$work/read.trc
"$trc" gen --records 4000 --seed 8 "$file" >/dev/null
# All as at a first start, in a zone that is not that of the file.
export XDG_CONFIG_HOME=$work/read-config XDG_STATE_HOME=$work/read-state TZ=Europe/Berlin
cd "$work" || fail "no folder"
start_reader

# column NAME [OPTION...]: that column of the file as trc prints it, a line each.
column() { "$trc" dump --columns "$1" "${@:2}" "$file" | tail -n +2 | sed 's/^ *//; s/ *$//'; }
# has_words ROW TEXT: the words of the row end so.
has_words() { [[ "$(reader words "$1")" == *", $2" ]]; }
has_no_mark() { ! [[ "$(reader words "$1")" =~ (Mark [1-9]|Note:) ]]; }

start_program "$file"
until_true "the list does not have its rows" says 4000 rows
key Home
at_row 0 Home

# Colour rules: the set for light lists is told by its rules; a row of an error gets their ground.
error_row=$(($(column Sev | grep -n Error | sed -n '1s/:.*//p') - 1))
go_to_row "$((error_row + 1))" "$error_row"
key Up
# has_ground COLOUR: the error's row, somewhere in its cell of the application.
has_ground() {
  local x y
  read -r x y < <(reader cell_place "$error_row" Application)
  import -window root -crop "60x6+$((x - 30))+$((y - 3))" +repage -depth 8 txt:- | grep -i " $1" >/dev/null
}
chooses alt+v "Colour Rules..."
until_true "no dialog of colour rules" is_active '^Colour Rules$'
reader all "list item" | grep severity >/dev/null && fail "there are rules before any was chosen"
key alt+f
rule_of_errors() { reader all "list item" | grep "severity.*error"; }
until_true "For Light Lists brings no rule of errors" rule_of_errors
says yes checked "check box" "Paint the rows of lists by these rules" || fail "the set is not switched on"
key Tab
until_true "Tab does not lead to the rules, but to '$(reader focus)'" says "Colour rules" focus
# The fields show the rule that the keys have come to.
of_errors() { [[ "$(reader value "Filter text")" =~ severity.*error ]]; }
for ((step = 0; step < 12; ++step)); do of_errors || key Down; done
of_errors || fail "Down did not reach the rule of errors"
ground=$(reader value Ground)
[[ "$ground" =~ ^#[0-9a-f]{6}$ ]] || fail "the rule of errors has the ground '$ground'"
picture reading-colour-rules
has_ground "$ground" && fail "the row has the ground $ground already"
key Return
until_true "Enter did not close the colour rules" has_no_window '^Colour Rules$'
until_true "row $error_row has no ground $ground" has_ground "$ground"
picture reading-colours

# Marks of one row and of several, a note; said with their rows, and saved beside the file.
go_to_row 3 2
key ctrl+d
until_true "Ctrl+D made no mark" has_words 2 "Mark 1"
go_to_row 5 4
key shift+Down ctrl+alt+3
until_true "Ctrl+Alt+3 made no mark" has_words 5 "Mark 3"
has_words 4 "Mark 3" || fail "only one of two selected rows was marked: $(reader words 4)"
go_to_row 9 8
opens Note ctrl+shift+d
xdotool type "the first retry"
key ctrl+Return
until_true "Ctrl+Enter did not close the note" has_no_window '^Note$'
until_true "the row has no note: $(reader words 8)" has_words 8 "Note: the first retry"
has_no_mark 3 || fail "row 3 has a mark: $(reader words 3)"
notes_are() {
  [ "$("$trc" notes "$file" | sed 's/^\([0-9]*: [^ ]*\).*/\1/')" = "$1" ]
}
saved=$'2: 1\n4: 3\n5: 3\n8: -\n    the first retry'
until_true "trc does not find what was marked" notes_are "$saved"

# From mark to mark, and around at the ends.
key Home
for row in 2 4 5 8 2; do
  key F2
  at_row "$row" "F2"
done
for row in 8 5; do
  key shift+F2
  at_row "$row" "Shift+F2"
done

# Their list: told with the names of the colours; Enter leads to the row.
key ctrl+shift+m
until_true "Ctrl+Shift+M does not list the marks" says 4 rows_of "Marks and notes"
says "3 Yellow" cell_of "Marks and notes" 1 Mark || fail "a mark is told as '$(reader cell_of "Marks and notes" 1 Mark)'"
says "the first retry" cell_of "Marks and notes" 3 Note || fail "the note is not in the list"
until_focus() { until_true "$2 does not lead to $1, but to '$(reader focus)'" says "$1" focus; }
says "Marks and notes" focus || key F6
until_focus "Marks and notes" F6
picture reading-marks
key Home Return
until_true "Enter does not select the trace of the first mark" row_is 2 selected
key End Return
until_true "Enter does not select the trace of the last one" row_is 8 selected
key Escape
until_focus Traces Escape
at_row 8 "Escape"
key ctrl+shift+m
has_no_marks() { ! reader rows_of "Marks and notes"; }
until_true "a second Ctrl+Shift+M did not put the list away" has_no_marks

# Columns of times, and the zone without a click.
zone=$(date -d 2026-03-28T07:00:00Z +%:z)
says "UTC$zone" pane "Time zone" || fail "the zone is told as '$(reader pane "Time zone")'"
for name in Delta Since "Wall Time"; do
  chooses alt+v "Time Columns" "$name"
  shows_column() { [[ ",$(reader headers)," == *",$name,"* ]]; }
  until_true "no column $name in $(reader headers)" shows_column
done
go_to_row 6 5
key ctrl+t
until_true "Ctrl+T made no reference: $(reader cell 5 Since)" says reference cell 5 Since
for name in Delta Since "Wall Time"; do
  for row in 4 5 6 7; do
    since=()
    [ "$name" != Since ] || since=(--since-row 5)
    # With the row above, from which Delta counts.
    wanted=$(column "$name" "${since[@]}" --from "$((row - 1))" --count 2 | tail -n 1)
    until_true "$name of row $row is not $wanted, but $(reader cell "$row" "$name")" says "$wanted" cell "$row" "$name"
  done
done
picture reading-times

# To a time, and to a row by its part of all or from the end. A wrong word is told with the field.
opens "Go to Time" ctrl+shift+t
xdotool type lunch
hint_is_reason() { [[ "$(reader describe text Time:)" == "A time is "* ]]; }
key Return
until_true "no reason is told: $(reader describe text Time:)" hint_is_reason
is_active '^Go to Time$' || fail "Enter took a wrong time"
key ctrl+a
xdotool type 08:00:01
key Return
until_true "Enter did not close Go to Time" has_no_window '^Go to Time$'
at_row "$("$trc" dump --since "2026-03-28 08:00:01" --count 1 --format jsonl "$file" | jq .i)" "Go to Time"
go_to_row 50% 2000
go_to_row -1 3999

# The overview: its keys choose a range, Enter filters by it; the line of filter text says by what.
key Home ctrl+shift+o
until_focus Overview Ctrl+Shift+O
errors=$(column Sev | grep -c Error) warnings=$(column Sev | grep -c Warn)
counts_are() { [[ "$(reader describe chart Overview)" == "4,000 traces from 08:00:00."*", $errors errors, $warnings warnings"* ]]; }
until_true "the overview says: $(reader describe chart Overview)" counts_are
key Home Right Right
is_here() { [[ "$(reader describe chart Overview)" == *". Here: "* ]]; }
until_true "Right does not say where it is: $(reader describe chart Overview)" is_here
key shift+Right shift+Right shift+Right
chosen_traces() { reader describe chart Overview | sed -n 's/.*\. Chosen: \([0-9,]*\) traces.*/\1/p' | tr -d ,; }
has_chosen() { [ "$(chosen_traces)" -gt 0 ]; }
until_true "Shift+Right chooses nothing: $(reader describe chart Overview)" has_chosen
chosen=$(chosen_traces)
picture reading-overview
key Return
until_true "the list does not have the $chosen chosen rows, but $(reader rows)" says "$chosen" rows
text=$(reader value "Filter text")
[ "$(column Count --where "$text" | wc -l)" -eq "$chosen" ] || fail "trc finds another number for $text"
key alt+Left
until_true "Alt+Left does not bring all rows back" says 4000 rows
key ctrl+shift+o
says Overview focus && key ctrl+shift+o
has_no_overview() { ! reader describe chart Overview; }
until_true "Ctrl+Shift+O did not put the overview away" has_no_overview
key alt+F4
ended_with 0
notes_are "$saved" || fail "the marks are not what they were: $("$trc" notes "$file")"
unset TZ
say "colours, marks, times and the overview: good"
