# Configurations by keyboard and by buttons, over real services: what the windows set is compared
# with what trc reads, and the applications' files with what was chosen.

export XDG_CONFIG_HOME=$work/config-config QUOR_AUTOSTART=0 QUOR_KEYS=$work/keys
export QUOR_SOCKET=$work/here/quord.sock
# start_quord SOCKET OPTION...: waits until the service there is ready.
start_quord() {
  mkdir -m 700 -p "$(dirname "$1")"
  QUOR_SOCKET=$1 QUOR_KEYS=$work/keys "$quord" --foreground "${@:2}" >"$1.log" 2>&1 &
  quord_pid=$!
  started+=("$quord_pid")
  until_true "no service at $1" grep -q "ready on" "$1.log"
}
# start_demo SOCKET NAME RATE
start_demo() {
  QUOR_SOCKET=$1 "$demo" --name "$2" --rate "$3" >"$1.$2" 2>&1 &
  demo_pid=$!
  started+=("$demo_pid")
  until_true "$2 is not registered" has_traces "$1" "$2"
}
has_traces() { [[ $(QUOR_SOCKET=$1 "$trc" show "$2" --json) == *'"settings":'* ]]; }
# settings APP: the different settings of its traces, parted by blanks.
settings() { "$trc" show "$1" --json | grep -o '"settings":[0-9]*' | cut -d: -f2 | sort -nu | paste -sd' '; }
has_settings() { [ "$(settings "$1")" = "$2" ]; }
# kill_now PID: without a word of the shell about it.
kill_now() {
  kill -KILL "$1"
  wait "$1" 2>/dev/null || true
}
items() { reader all "list item" | paste -sd,; }
shows_items() { [ "$(items)" = "$1" ]; }
# has_label TEXT: somewhere in the windows; tells PART: a part of one.
has_label() { [[ $'\n'$(reader all label)$'\n' == *$'\n'"$1"$'\n'* ]]; }
tells() { [[ $(reader all label) == *"$1"* ]]; }
# asks_about APP: the question whose traces are still on is up.
asks_about() { tells "Some traces are still active in $1.  Do you want to turn them off?"; }
# answers APP KEY: the question about it is answered so, and goes.
answers() {
  until_true "nobody asks about the traces of $1" asks_about "$1"
  until_true "$2 does not answer the question about $1" goes_by "$1" "$2"
}
# A question that has just come may not have the keyboard yet.
goes_by() {
  local look
  key "$2"
  for look in {1..20}; do
    asks_about "$1" || return 0
    sleep 0.05
  done
  return 1
}

start_reader
no_wizard
start_quord "$QUOR_SOCKET"
start_demo "$QUOR_SOCKET" billing 50
billing_pid=$demo_pid
start_demo "$QUOR_SOCKET" orders 4000
start_program

# New Config: the prompt, the window, the placeholder.
opens "Machine Query" alt+c
until_true "the prompt is another one" has_label "What machine to you want to configure?"
types localhost Machine
key Return
until_true "no window on localhost" says Applications focus
shows_items "<add applications to trace>" || fail "the new window lists $(items)"
picture config-new

# Two applications, each with its sheet: the traces of billing by each button, then by Custom.
opens "Add Application" ctrl+a
key Home shift+End
until_true "OK is not enabled" says yes enabled "push button" OK
picture config-add
key Return
until_true "no sheet of billing" is_active "^Configuration for billing$"
shows_settings_after() {
  reader press "$1" >/dev/null || fail "the button $1 cannot be pressed"
  until_true "Apply is not enabled after $1" says yes enabled "push button" Apply
  reader press Apply >/dev/null
  until_true "$1 does not give billing $2, but $(settings billing)" has_settings billing "$2"
}
until_true "the traces have no keyboard" says Traces focus
key ctrl+a
until_true "Ctrl+A selects no traces" says yes enabled "push button" Off
for preset in Off:0 Support:7 Developer:15 Max:799; do
  shows_settings_after "${preset%:*}" "${preset#*:}"
done
picture config-traces
reader press Custom >/dev/null
until_true "no Modify Trace" is_active "^Modify Trace$"
key alt+c alt+w alt+v # Verbose was on
picture config-custom
key Return
until_true "Modify Trace stays" has_no_window "^Modify Trace$"
key Return
until_true "the sheet of billing stays" has_no_window "^Configuration for billing$"
until_true "Custom does not give billing what was chosen, but $(settings billing)" \
  has_settings billing 782

# orders: everything on, into files of 1 MB, of which two older ones are kept.
until_true "no sheet of orders" is_active "^Configuration for orders$"
until_true "the traces of orders have no keyboard" says Traces focus
key ctrl+a alt+m ctrl+Tab
until_true "no page of the sink" reader value "File Name"
key alt+f alt+n
types "$work/orders.trc" "File Name"
key alt+h
xdotool type --clearmodifiers 2
key alt+x
xdotool type --clearmodifiers 1
picture config-sink
key Return
until_true "the sheet of orders stays" has_no_window "^Configuration for orders$"
until_true "orders is not wholly on, but $(settings orders)" has_settings orders 799
until_true "the list does not show both" shows_items billing,orders
files_roll() { [ -s "$work/orders.trc" ] && [ -s "$work/orders.1.trc" ] && [ -s "$work/orders.2.trc" ]; }
until_true "the files of orders do not roll" files_roll
"$trc" info "$work/orders.1.trc" | grep orders >/dev/null || fail "a rolled file has no traces of orders"
picture config-window

# Saved: the file says what the machine holds.
opens "Save As" ctrl+s
types "$work/shop.tcf" "File name:"
closes_to_list() {
  until_true "$1 stays" has_no_window "^$1\$"
  until_true "the list has no keyboard after $1" says Applications focus
}
key Return
closes_to_list "Save As"
"$trc" config diff "$work/shop.tcf" localhost || fail "the saved file differs from the machine"

# The application is killed while its sheet is up, and one of its name begins again.
key b
opens "Configuration for billing" alt+p
kill_now "$billing_pid"
is_away() { [[ $("$trc" apps --json) != *'"billing","running":true'* ]]; }
until_true "billing still runs" is_away
until_true "the traces have no keyboard" says Traces focus
key ctrl+a
until_true "Ctrl+A selects no traces of billing" says yes enabled "push button" Support
key alt+s Return
closes_to_list "Configuration for billing"
start_demo "$QUOR_SOCKET" billing 50
until_true "the next billing does not begin with Support, but $(settings billing)" has_settings billing 7

# The window closes: a question to save, then one for each application; Cancel brings it back.
key ctrl+F4
until_true "nobody asks to save" tells "Save changes to shop.tcf?"
key alt+n
until_true "nobody asks about the traces of billing" asks_about billing
key Escape
answers billing alt+n
answers orders alt+y
until_true "orders is still on: $(settings orders)" has_settings orders 0
has_settings billing 7 || fail "No turned billing off: $(settings billing)"
until_true "the window stays" shows_items ""

# The file on a second machine: the same settings there, by the file's name alone.
there=$work/there/quord.sock
"$quord" keys init --host there >/dev/null 2>&1 || fail "no keys"
"$quord" keys issue ada --role configure --out "$work/ada" >/dev/null 2>&1 || fail "no certificate"
start_quord "$there" --listen 127.0.0.1:0
port=$(sed -n 's/.*listening on 127.0.0.1:\([0-9]*\).*/\1/p' "$there.log" | tail -1)
start_demo "$there" billing 50
start_demo "$there" orders 50
key alt+F4
ended_with 0
export QUOR_KEYS=$work/ada
start_program
opens Open ctrl+o
types "$work/shop.tcf" "File name:"
key Return
until_true "no Machine Query for the file" is_active "^Machine Query$"
until_true "the prompt of the file is another one" has_label "What machine do you want to configure?"
types "127.0.0.1:$port" Machine
key Return
until_true "the file does not show its applications" shows_items billing,orders
"$trc" config diff "$work/shop.tcf" "127.0.0.1:$port" || fail "the second machine differs from the file"
picture config-second

# The service goes and comes back: a line tells it.
note() { has_label "Not connected to 127.0.0.1:$port. Trying again."; }
no_note() { ! note; }
kill_now "$quord_pid"
until_true "no line tells that the connection is gone" note
picture config-gone
start_quord "$there" --listen "127.0.0.1:$port"
until_true "the line stays although the service is back" no_note

# Quick Close turns all off and asks nothing more.
key alt+F4
until_true "no question of Quick Close" is_active "^Application Exit$"
key alt+y
ended_with 0
export QUOR_SOCKET=$there
for app in billing orders; do
  until_true "Quick Close left $app on: $(settings $app)" has_settings "$app" 0
done
say "configurations, their windows and their files: good"
