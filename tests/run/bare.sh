# A bare start: the wizard, until its box is off. Then the empty frame, in the stored size.

# middle WINDOW: of its width, on the screen.
middle() { xdotool getwindowgeometry --shell "$1" | awk -F= '/^X=/ { x = $2 } /^WIDTH=/ { print int(x + $2 / 2) }'; }
is_over_the_window() {
  local off=$(($(middle "$(xdotool getactivewindow)") - $(middle "$(main_window)")))
  [ "${off#-}" -lt 20 ]
}

start_wizard
until_true "the wizard is not over the middle of the main window" is_over_the_window
picture wizard-welcome
key space # the first control is the box
until_true "the box of the wizard was not stored" has_setting '\Settings\Wizard' Auto-start 0
key Escape
until_true "Esc did not close the wizard" has_no_window '^Trace Wizard'
until_true "the main window is not active after the wizard" is_active '^Tessera$'
key alt+F4
ended_with 0
start_program
until_true "a bare start shows a document" room_is_empty
width=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p')
[ "$width" -eq 1000 ] || fail "the stored width was not taken: $width"
picture bare
key alt+h
key a
until_true "Alt+H, A opened no About" is_active '^About Tessera$'
picture about
key Return
until_true "Enter did not close About" has_no_window '^About Tessera$'
until_true "the main window is not active after About" is_active '^Tessera$'
key alt+F4
ended_with 0
say "a bare start: good"
