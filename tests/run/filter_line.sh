# The line of filter text: typed with completion, wrong and right, steps by the cell, and a filter that
# is saved and used by the next run of the program. What the list shows is what trc gives for the text.

file=$work/lines.trc
"$trc" gen --records 4000 --seed 6 "$file" >/dev/null
# All as at a first start.
export XDG_CONFIG_HOME=$work/line-config XDG_STATE_HOME=$work/line-state
cd "$work" || fail "no folder"
start_reader

text_is() { says "$1" value "Filter text"; }
# chosen TEXT COLUMN: that column of the traces that trc chooses, a line each.
chosen() {
  "$trc" dump --where "$1" --columns "$2" "$file" 2>/dev/null | tail -n +2 | sed 's/^ *//; s/ *$//'
}
# shows TEXT: the list has as many rows as trc gives, and the first and last of them.
shows() {
  local rows row
  rows=$(chosen "$1" Count | wc -l)
  says "$rows" rows || return 1
  for row in 0 $((rows - 1)); do
    [ "$rows" -eq 0 ] || says "$(chosen "$1" Trace | sed -n "$((row + 1))p")" cell "$row" Trace || return 1
  done
}
# in_force TEXT: the line says this, and the list shows it.
in_force() {
  until_true "the line does not say '$1', but '$(reader value "Filter text")'" text_is "$1"
  until_true "the list does not show '$1'" shows "$1"
}
message_has() { reader all label | grep -qF "$1"; }
offers() { reader all "list item" | grep -q "^$1\b"; }
# takes BEGIN OFFER TEXT: after the beginning the offer is in the list; Tab takes it.
takes() {
  xdotool type --clearmodifiers "$1"
  until_true "the list does not offer $2 after $1" offers "$2"
  key Tab
  until_true "Tab did not take $2: '$(reader value "Filter text")'" text_is "$3"
}
# Pixels of a red that no text has otherwise, in the lower half of what the field shows of these
# characters.
red_below() {
  local x y width height
  read -r x y width height < <(reader part "Filter text" "$1" "$2")
  import -window root -crop "${width}x$((height / 2 + 4))+$x+$((y + height / 2))" +repage -depth 8 txt:- |
    sed -n 's/.*(\([0-9]*\),\([0-9]*\),\([0-9]*\)).*/\1 \2 \3/p' |
    awk '$1 > $2 + 60 && $1 > $3 + 60 { ++count } END { print count + 0 }'
}
menu_is_up() { xdotool search --all --onlyvisible --pid "$program" --name '^$' | grep -q .; }
# step BACK COLUMN KEY: the menu of the cell, BACK rows before the last, which is in sight; and in it the
# item with this key.
step() {
  local x y
  read -r x y < <(reader cell_place "$(($(reader rows) - 1 - $1))" "$2") || fail "no row stands $1 before the last"
  xdotool mousemove "$x" "$y" click 3
  until_true "no menu at the cell $2" menu_is_up
  key "$3"
}
open_filters() {
  local x y
  read -r x y < <(reader place "push button" "Recent and saved filters")
  xdotool mousemove "$x" "$y" click 1
  until_true "the button Filters opens no menu" menu_is_up
}

start_program "$file"
until_true "the list does not have its rows" says 4000 rows
has_line() { reader all text | grep -qx "Filter text"; }
has_line && fail "the line is there before it was asked for"
key ctrl+l
until_true "Ctrl+L does not lead to the line" says "Filter text" focus

# Completion: of fields, of words, and of the names that the file has.
takes sev severity "severity "
takes ">= w" warn "severity >= warn "
takes "and comp" component "severity >= warn and component "
name=$(chosen "severity >= warn" Component | sort | uniq -c | sort -rn | awk 'NR == 1 { print $2 }')
takes "== ${name:0:2}" "$name" "severity >= warn and component == $name "
picture filter-line-completion
says 4000 rows || fail "what is typed filters before Enter"
key Return
text="severity >= warn and component == $name"
until_true "Enter did not apply the text: the list does not show '$text'" shows "$text"

# An error: the reason and the place that trc tells, underlined there; what is in force stays.
wrong="severity >= warn and componet == Sql"
types "$wrong" "Filter text"
told=$("$trc" dump --where "$wrong" "$file" 2>&1 >/dev/null || true)
reason=$(sed -n '1s/^trc: --where: \([^;]*\).*/\1/p' <<<"$told")
mark=$(sed -n '3s/\^.*//p' <<<"$told")
place=$((${#mark} - 2))
[ "${wrong:place:8}" = componet ] || fail "trc marks another place: $told"
until_true "the line does not say: $reason" message_has "Column $((place + 1)): $reason"
[ "$(red_below "$place" "$((place + 8))")" -gt 8 ] || fail "the wrong word is not underlined"
[ "$(red_below 0 8)" -eq 0 ] || fail "a right word is underlined"
picture filter-line-error
key Return
sleep 0.5
shows "$text" || fail "a wrong text was applied"

# Steps by the cell, back and forth.
types "severity >= warn" "Filter text"
key Return
in_force "severity >= warn"
texts=("severity >= warn")
# add_step BACK COLUMN KEY TEST: the step adds a test with these words behind those before.
add_step() {
  step "$1" "$2" "$3"
  until_true "the step $3 of $2 adds no test of $4" has_grown "${texts[-1]}" "$4"
  texts+=("$(reader value "Filter text")")
  in_force "${texts[-1]}"
}
has_grown() { [[ "$(reader value "Filter text")" == "$1 and "*"$2"* ]]; }
# cell BACK COLUMN: of the shown rows, what that cell says.
cell() { reader cell "$(($(reader rows) - 1 - $1))" "$2"; }
add_step 3 Component h "component != $(cell 3 Component)"
application=$(cell 2 Application)
add_step 2 Application o "application == "
[[ "${texts[-1]}" == *"$application"* ]] || fail "the step is of another cell than $application: ${texts[-1]}"
add_step 1 Trace r "tid =="
picture filter-line-steps
for ((at = ${#texts[@]} - 2; at >= 0; --at)); do
  key alt+Left
  in_force "${texts[at]}"
done
for ((at = 1; at < ${#texts[@]}; ++at)); do
  key alt+Right
  in_force "${texts[at]}"
done
key alt+Left
saved=${texts[-2]}
in_force "$saved"

# Saved by a name; the next run begins with the text of this one, and uses the saved one.
open_filters
key s
until_true "no dialog asks for the name" is_active '^Save Filter$'
xdotool type --clearmodifiers "shop trouble"
key Return
until_true "Enter did not close the dialog" has_no_window '^Save Filter$'
key alt+F4
ended_with 0
start_program "$file"
in_force "$saved"  # the view of the file comes back
has_line || fail "the line is not remembered"
key ctrl+l
until_true "Ctrl+L does not lead to the line again" says "Filter text" focus
types "severity == warn" "Filter text"
key Return
in_force "severity == warn"
open_filters
picture filter-line-saved
key Down Down Return
in_force "$saved"

# All rows, as a file.
opens "Export" alt+f e
types "$work/lines.csv" "File name:"
key Return
until_true "Enter did not close Export" has_no_window '^Export$'
"$trc" export --where "$saved" "$file" "$work/wanted-lines.csv" >/dev/null
[ "$(wc -l <"$work/wanted-lines.csv")" -gt 5 ] || fail "trc exported too little"
until_true "the export differs from that of trc" cmp "$work/lines.csv" "$work/wanted-lines.csv"
key alt+F4
ended_with 0
say "the line of filter text: good"
