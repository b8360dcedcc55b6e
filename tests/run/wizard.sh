# The wizard as a new user meets it: a bare start with empty settings leads to live rows, once by
# keyboard and once by mouse; then two remote machines. What it sets is compared with what trc reads.

leads_to_rows() { [ "$(reader rows)" -gt 0 ]; }
step_is() { until_true "the wizard does not show $1" is_active "^Trace Wizard: $1\$"; }
# Where the keyboard is not yet, a key is lost.
has_focus() { until_true "$1 has no keyboard, but $(reader focus)" says "$1" focus; }
can_go_on() { until_true "Next is not enabled" says yes enabled "push button" Next; }
# Never twice at the same place, or two quick clicks would be a double click.
click() {
  local place
  place=$(reader place "$@") || fail "there is no $*"
  aside=$((-${aside:-8}))
  # shellcheck disable=SC2086
  xdotool mousemove $place mousemove_relative --sync -- $aside 0 click ${times:+--repeat "$times" --delay 20} 1
}
# A user's first start on a machine whose service has one application.
first_start() {
  export XDG_CONFIG_HOME=$work/wizard-$1 QUOR_SOCKET=$work/wizard/$1/quord.sock QUOR_KEYS=$work/keys
  start_quord "$QUOR_SOCKET"
  start_demo "$QUOR_SOCKET" orders 200
  began=$SECONDS
  start_wizard
}
# ends_in_rows HOW: the wizard has closed; its windows and the settings in force.
ends_in_rows() {
  until_true "Finish does not close the wizard" has_no_window '^Trace Wizard'
  until_true "no rows in the monitor" leads_to_rows
  local took=$((SECONDS - began))
  picture "wizard-end-$1"
  [ "$took" -lt 60 ] || fail "$took seconds by $1"
  key alt+F4
  until_true "no question of Quick Close" is_active "^Application Exit$"
  key alt+y
  ended_with 0
  say "the wizard by $1: from nothing to rows in $took s"
}

start_reader
mkdir -m 700 "$work/wizard"

first_start keyboard
reader all panel | grep "^Trace Wizard: Welcome$" >/dev/null || fail "the page has no name for a screen reader"
has_focus "Auto-start Wizard when Tessera is run"
key Return
step_is Mode
has_focus "New setup for real-time tracing"
key Return
step_is Networking
has_focus "Local setup only"
key Return
step_is "Applications on $(hostname)"
has_focus Applications
key o space # type-ahead
can_go_on
picture wizard-applications
key Return
step_is "Traces for orders"
has_focus Traces
key ctrl+a alt+m
picture wizard-traces
key Return
step_is Finish
has_focus Finish
key Return
until_true "orders is not wholly on, but $(settings orders)" has_settings orders 799
ends_in_rows keyboard

first_start mouse
times=2 click "push button" Next # a double click takes one step
step_is Mode
click "push button" Next
step_is Networking
click "radio button" "Local setup only"
click "push button" Next
step_is "Applications on $(hostname)"
until_true "orders is not offered" reader place "list item" orders
click "list item" orders
can_go_on
click "push button" Next
step_is "Traces for orders"
until_true "no traces of orders" reader place "table cell" Query
click "table cell" Query
until_true "a click selects no trace" says yes enabled "push button" Max
click "push button" Max
click "push button" Next
step_is Finish
click "push button" Finish
ends_in_rows mouse

# Two machines over TLS, each with an application of its own.
first_start remote
key alt+F4 # of the wizard alone
until_true "Alt+F4 does not close the wizard" has_no_window '^Trace Wizard'
machines=()
for name in web db; do
  socket=$work/wizard/$name/quord.sock
  start_quord "$socket" --listen 127.0.0.1:0
  machines+=("127.0.0.1:$(sed -n 's/.*listening on 127.0.0.1:\([0-9]*\).*/\1/p' "$socket.log" | tail -1)")
  start_demo "$socket" "$name" 50
done
key alt+F4
ended_with 0
export QUOR_KEYS=$work/ada
start_wizard
key Return
step_is Mode
has_focus "New setup for real-time tracing"
key Return
step_is Networking
has_focus "Local setup only"
key Down # chooses the next radio button
key Return
step_is Machines
for machine in "${machines[@]}"; do
  opens "Machine Query" alt+a
  types "$machine" Machine
  key Return
  step_is Machines
done
until_true "the machines are not listed" bash -c "[ \"\$('$here/screen_reader.py' all 'list item' 2>/dev/null | wc -l)\" = 2 ]"
picture wizard-machines
key Return
mapfile -t machines < <(printf '%s\n' "${machines[@]}" | LC_ALL=C sort)
for machine in "${machines[@]}"; do
  step_is "Applications on $machine"
  has_focus Applications
  key ctrl+a
  can_go_on
  key Return
  until_true "no page of traces for $machine" is_active "^Trace Wizard: Traces for .* on $machine\$"
  has_focus Traces
  key ctrl+a alt+s Return
done
step_is Finish
has_focus Finish
key Return
until_true "Finish does not close the wizard" has_no_window '^Trace Wizard'
for name in web db; do
  QUOR_SOCKET=$work/wizard/$name/quord.sock
  until_true "$name has not Support, but $(settings "$name")" has_settings "$name" 7
done
picture wizard-end-remote
key alt+F4
until_true "no question of Quick Close" is_active "^Application Exit$"
key alt+y
ended_with 0
say "the wizard by keyboard, by mouse and for two machines: good"
