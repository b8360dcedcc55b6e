# A file on the command line: window, keys, menus, windows inside, a changed option, a normal end.

# What is painted in a corner of the room for the windows: one colour when no window lies there.
corner_colours() {
  import -window "$window" png:- | convert png:- -crop 160x60+20+120 +repage -unique-colors txt:- |
    grep -vc '^#'
}
room_is_empty() { [ "$(corner_colours)" -eq 1 ]; }
room_is_not_empty() { [ "$(corner_colours)" -gt 1 ]; }

start_program "$work/web.trc"
until_true "the progress box stays" has_no_window '^Loading'
until_true "no list is to be seen" room_is_not_empty

# The size is stored; minimising and coming back leaves what is stored.
xdotool windowsize "$window" 1000 700
until_true "the size was not stored" has_setting '\Settings' 'Window Width' 1000
xdotool windowminimize "$window"
until_true "the window is not minimised" bash -c "xprop -id $window WM_STATE | grep -q Iconic"
xdotool windowactivate "$window"
until_true "the main window did not come back" is_active '^Tessera'
has_setting '\Settings' 'Window Width' 1000 || fail "minimising changed the stored width"
picture with-a-file

# F1 opens the help, Esc closes it.
key F1
until_true "F1 opened no help" is_active 'Tessera Help'
key Escape
until_true "Esc did not close the help" has_no_window 'Tessera Help'
until_true "the main window is not active after the help" is_active '^Tessera$'

# View > Options... by the menu's keys; the first box, Severity, by Space; OK by Enter.
key alt+v
key o
until_true "Alt+V, O opened no Options" is_active '^Options$'
picture options
key space
key Return
until_true "Enter did not close Options" has_no_window '^Options$'
severity_is_hidden() {
  setting '\Settings\TraceView\Columns' 'Active Columns' | grep -qi '^hex:00'
}
until_true "the options were not stored" severity_is_hidden
until_true "the main window is not active after Options" is_active '^Tessera$'

# A second window of the document; tiled, each is as wide as the room.
key alt+w
key n
key alt+w
key t
tiled_in_full_width() { [ "$(setting '\Settings\TraceView' 'Window Width')" -gt 960 ]; }
until_true "two windows were not tiled" tiled_in_full_width
picture tiled

# Ctrl+W closes no window: it opens the wizard. Ctrl+F4 closes one after the other.
opens "Trace Wizard: Welcome" ctrl+w
key Escape
until_true "Esc did not close the wizard" has_no_window '^Trace Wizard'
until_true "the main window is not active after the wizard" is_active '^Tessera$'
room_is_not_empty || fail "Ctrl+W closed a window"
key ctrl+F4
key ctrl+F4
until_true "Ctrl+F4 did not close the windows" room_is_empty

# The recent file opens it again.
key alt+f
key 1
until_true "the recent file did not open" room_is_not_empty
until_true "the progress box stays after the recent file" has_no_window '^Loading'

# Alt+F4 ends the program; nothing is modified, so nothing asks.
key alt+F4
ended_with 0
has_setting '\Recent File List' 'File1' "\"$work/web.trc\"" || fail "the recent file was not stored"
say "a file, its keys and a normal end: good"
