# What a screen reader meets, asked from outside the program, and the keyboard's locks.

# The server's keyboard has a Scroll Lock key that is no modifier, and so locks nothing.
tie_scroll_lock() {
  xkbcomp "$DISPLAY" "$work/keys.xkb"
  sed -i '0,/modifier_map/s//modifier_map Mod3 { <SCLK> };\n    modifier_map/' "$work/keys.xkb"
  xkbcomp "$work/keys.xkb" "$DISPLAY"
} 2>/dev/null

tie_scroll_lock || fail "the keyboard's map cannot be changed"
# All as at a first start.
export XDG_CONFIG_HOME=$work/reader-config XDG_STATE_HOME=$work/reader-state
start_reader
start_program "$work/web.trc"
until_true "the list does not have its rows" says 20000 rows
says Sev,Application,Component,Category,Trace headers || fail "columns: $(reader headers)"
for row in 0 12345 19999; do
  text=$("$trc" dump --from "$row" --count 1 --columns Trace "$work/web.trc" | tail -n +2)
  says "$text" cell "$row" Trace || fail "row $row says: $(reader cell "$row" Trace)"
done
says 20000 pane Rows || fail "the row count's pane says: $(reader pane Rows)"

# The keyboard's selection is heard, and the reader's own is taken.
key Home
until_true "Home does not select the first row" says 0 selected
reader select 2 >/dev/null || fail "a row cannot be selected"
says 0,2 selected || fail "selected: $(reader selected)"

# A dialog's controls are heard by their texts.
says yes enabled "push button" Options || fail "the button Options is not enabled"
says no enabled "push button" Pause || fail "a file cannot be paused"
key alt+v
key o
until_true "Alt+V, O opened no Options" is_active '^Options$'
for box in Severity Count Time "Use Coordinated Universal Time (UTC)"; do
  has_box() { reader all "check box" | grep -qxF "$box"; }
  until_true "Options has no box $box" has_box
done
key Escape
until_true "Esc did not close Options" has_no_window '^Options$'
until_true "the main window is not active after Options" is_active '^Tessera'

# A lock's key shows and hides its pane.
for lock in "Caps_Lock:Caps Lock:CAP" "Num_Lock:Num Lock:NUM" \
  "Scroll_Lock:Scroll Lock:SCRL"; do
  IFS=: read -r lock_key description text <<<"$lock"
  before=$(reader pane "$description")
  for turn in 1 2; do
    [ -z "$(reader pane "$description")" ] && wanted=$text || wanted=
    xdotool key "$lock_key"
    until_true "turn $turn of $lock_key: the pane does not say '$wanted'" says "$wanted" pane "$description"
  done
  says "$before" pane "$description" || fail "$lock_key does not come back"
done

# A button is pressed by its name.
reader press "Erase All" >/dev/null || fail "the button Erase All cannot be pressed"
until_true "Erase All left rows" says 0 rows
until_true "the row count's pane still counts" says 0 pane Rows
key alt+F4
ended_with 0
say "a screen reader and the keyboard's locks: good"
