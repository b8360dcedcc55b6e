#!/usr/bin/env bash
# Runs in the bare root of try_packages.sh, without a network: installs the packages, starts the service
# in every way that they offer, traces from programs that were built with libquor-dev, and removes and
# purges the packages. Nothing of them may be left.
set -euo pipefail

say() { printf '%s\n' "try_packages: $*"; }
fail() {
  tail -n 20 /tmp/*.log >&2 2>/dev/null || true
  say "FAILED: $*" >&2
  exit 1
}
until_true() {
  local words=$1
  shift
  for _ in $(seq 300); do
    "$@" >/dev/null 2>&1 && return
    sleep 0.1
  done
  fail "$words"
}

# Every file with its mode, owner, size and link, but for what dpkg and ldconfig keep of all packages, the
# copies that the tools for accounts keep of the state before, and what is in memory only.
files() {
  find / -xdev \( -path /proc -o -path /packages -o -path /home -o -path /tmp -o -path /run -o -path /dev \
    -o -path '/var/lib/dpkg/*-old' -o -path /var/lib/dpkg/status -o -path /var/lib/dpkg/available \
    -o -path '/var/lib/dpkg/lock*' -o -path '/var/lib/dpkg/triggers' -o -path /var/lib/dpkg/diversions \
    -o -path '/etc/passwd-' -o -path '/etc/shadow-' -o -path '/etc/group-' -o -path '/etc/gshadow-' \
    -o -path /var/log/dpkg.log -o -path /var/cache/ldconfig -o -path /etc/ld.so.cache \) -prune \
    -o ! -type d -printf '%p %y %m %u:%g %s %l\n' -o -printf '%p %y %m %u:%g\n' | sort
}

account=orders
second=mail-in
useradd --create-home --uid 1500 --shell /bin/bash "$account"
useradd --create-home --uid 1501 --shell /bin/bash "$second"
runtime=/run/user/1500
install -d -o "$account" -m 0700 "$runtime"
install -d -o "$second" -m 0700 /run/user/1501
# as NAME=VALUE... COMMAND...: as a shell of the account would run it.
as() { runuser -u "$account" -- env HOME=/home/$account XDG_RUNTIME_DIR=$runtime "$@"; }
as_second() { runuser -u "$second" -- env HOME=/home/$second XDG_RUNTIME_DIR=/run/user/1501 "$@"; }

files >/tmp/before
names=()
for file in /packages/*.deb; do names+=("$(dpkg-deb -f "$file" Package)"); done

dpkg -i /packages/*.deb >/tmp/install.log 2>&1 || fail "the packages cannot be installed"
say "installed: ${names[*]}"
ldconfig -p | grep -q 'libquor\.so\.1 ' || fail "the linker does not know the library: no trigger"
for program in quord quor-bridge quor-demo trc tessera; do
  as QT_QPA_PLATFORM=offscreen "$program" --version >/dev/null || fail "$program does not run"
  [ -s "/usr/share/man/man1/$program.1.gz" ] || fail "$program has no manual page"
done
for name in "${names[@]}"; do
  [ -s "/usr/share/doc/$name/copyright" ] || fail "$name has no copyright"
  [ -s "/usr/share/doc/$name/changelog.gz" ] || [ -L "/usr/share/doc/$name" ] ||
    fail "$name has no changelog"
done
[ "$(systemctl --global is-enabled quord.socket)" = enabled ] || fail "the users' socket is not enabled"
[ "$(systemctl --global is-enabled quord.service || true)" = disabled ] ||
  fail "the users' service is enabled, not only its socket"
for unit in quord.socket quord.service; do
  [ "$(systemctl is-enabled $unit || true)" = disabled ] || fail "the machine's $unit is enabled by itself"
done
[ "$(getent passwd quord | cut -d: -f6,7)" = /nonexistent:/usr/sbin/nologin ] && getent group quor >/dev/null ||
  fail "the account or the group of the machine's service is missing"
systemctl --quiet enable quord.socket 2>/tmp/enable.log || fail "the machine's socket cannot be enabled"
systemctl --quiet enable quord@$account.socket 2>/tmp/enable.log || fail "an account's socket cannot be enabled"
XDG_RUNTIME_DIR=/tmp systemd-analyze --man=no verify /lib/systemd/system/quord@$account.service \
  /lib/systemd/system/quord.service >/tmp/verify.log 2>&1 || fail "the installed unit is wrong"

# What a developer does: the examples, with CMake and with pkg-config.
as cp -r /usr/share/doc/libquor-dev/examples /home/$account/examples
as bash -euc 'cd ~/examples && cmake -B build . && cmake --build build -j2
  cc orders.c $(pkg-config --cflags --libs quor) -o orders' >/tmp/build.log 2>&1 ||
  fail "the examples do not build"
for program in build/orders_c build/orders_cpp orders; do
  readelf -d /home/$account/examples/$program | grep -q 'NEEDED.*libquor\.so\.1\]' ||
    fail "$program does not use the shared library"
done
cat >/home/$account/examples/orders_python <<'END'
#!/bin/sh
exec python3 /usr/share/doc/python3-quor/examples/orders.py
END
cat >/home/$account/examples/orders_node <<'END'
#!/bin/sh
exec node /usr/share/doc/node-quor/examples/orders.js
END
chmod +x /home/$account/examples/orders_{python,node}

# traces PROGRAM [NAME=VALUE...]: its traces arrive at a monitor.
traces() {
  local program=$1 shown=/tmp/shown.log tail
  shift
  : >"$shown"
  as "$@" trc tail --count 3 --for 30 >"$shown" 2>/tmp/tail.log &
  tail=$!
  until_true "the service does not answer" as "$@" trc apps
  as "$@" "/home/$account/examples/$program" >/tmp/program.log 2>&1 || fail "$program fails"
  wait "$tail" || fail "no traces of $program arrive"
  grep -q 'orders.*Net.*Connect.*connected to db.example.com' "$shown" ||
    fail "the traces of $program are wrong"
}
served() { [ -n "$(pgrep -x quord)" ]; }
unserved() { ! served; }
stop_service() {
  kill $(pgrep -x quord)
  until_true "the service does not end" unserved
}

# By itself, with the first monitor or trace.
traces build/orders_cpp A=B
as quord status >/tmp/status.log || fail "quord status says no"
traces orders_python A=B
traces orders_node A=B
stop_service
say "programs in C++, Python and Node are traced; the service starts by itself"

# As the users' units do it: the manager listens, and the first use starts what the unit names.
start=$(sed -n 's/^ExecStart=//p' /usr/lib/systemd/user/quord.service)
socket=$(sed -n "s,^ListenStream=%t,$runtime,p" /usr/lib/systemd/user/quord.socket)
rm -rf "${socket%/*}"
install -d -o "$account" -m 0700 "${socket%/*}"
# shellcheck disable=SC2086 # the words of a command
as systemd-socket-activate --listen="$socket" $start >/tmp/activate.log 2>&1 &
until_true "nobody listens for the service" test -S "$socket"
served && fail "the service runs before it is used"
traces build/orders_c A=B
stop_service
say "the socket of the users' unit starts the service"

# As the unit of an account does it, with its own folders.
install -d -o "$account" -m 0700 /var/lib/quor-$account /run/quor-$account
start=$(sed -n 's/^ExecStart=//p' /lib/systemd/system/quord@.service)
socket=$(sed -n "s/%i/$account/g; s/^ListenStream=//p" /lib/systemd/system/quord@.socket)
quord keys init --keys-dir /etc/quor/keys --host localhost >/tmp/keys.log 2>&1 || fail "no keys"
# shellcheck disable=SC2086
as STATE_DIRECTORY=/var/lib/quor-$account QUOR_KEYS=/etc/quor/keys systemd-socket-activate \
  --setenv=STATE_DIRECTORY --setenv=QUOR_KEYS --listen="$socket" $start >/tmp/system.log 2>&1 &
until_true "nobody listens for the account's service" test -S "$socket"
traces orders "QUOR_SOCKET=$socket"
stop_service
[ -e /var/lib/quor-$account/state.db ] || fail "the account's service keeps nothing in /var/lib"
say "the account's unit starts a service that keeps its settings"

# One for all accounts. Without a manager root starts it, and it becomes the account quord.
quord --machine >/tmp/machine.log 2>&1 || fail "the service of the machine does not start"
until_true "the service of the machine does not answer" trc apps
[ "$(ps -o user= -p "$(pgrep -x quord)")" = quord ] || fail "the service of the machine has rights of root"
[ "$(stat -c %U:%a /run/quor)" = quord:755 ] || fail "the folder of the machine's service is wrong"
trc tail --format jsonl --for 30 >/tmp/all.log 2>/tmp/tail.log &
all=$!
as_second trc tail --format jsonl --for 30 >/tmp/own.log 2>/tmp/tail.log &
own=$!
as trc emit --app shop --count 5 >/tmp/emit.log 2>&1 || fail "an account cannot trace"
as_second trc emit --app post --count 5 >/tmp/emit.log 2>&1 || fail "another account cannot trace"
traced() { [ "$(grep -c "\"account\":\"$2\"" "$1")" -eq 5 ]; }
until_true "root does not see all accounts" traced /tmp/all.log "$account"
until_true "root does not see all accounts" traced /tmp/all.log "$second"
until_true "an account does not see its own traces" traced /tmp/own.log "$second"
kill $all $own
wait $all $own || true # ended by the signal
grep -q "$account" /tmp/own.log && fail "an account sees the traces of another one"
as trc emit --app shop --rate 5 >/tmp/emit.log 2>&1 &
shop=$!
listed() { trc apps | grep -qx "$account/shop  *$account"; }
until_true "root does not see the application of an account" listed
until_true "--user finds no application" trc apps --user "$account"
as_second trc apps 2>/dev/null | grep -q shop && fail "an account sees the applications of another one"
as_second trc set shop --all off 2>/dev/null && fail "an account changes the applications of another one"
usermod --append --groups quor "$second"
until_true "a member of the group quor does not see all accounts" as_second trc apps --user "$account"
as_second trc set $account/shop --all off || fail "a member of the group quor changes nothing"
kill $shop
quord stop >/tmp/stop.log || fail "root cannot end the service of the machine"
until_true "the service of the machine does not end" unserved
say "one service traces all accounts, and each sees what it may"

as trc gen --records 1000 /tmp/sample.trc >/tmp/gen.log 2>&1 || fail "trc gen fails"
as QT_QPA_PLATFORM=offscreen tessera --render /tmp/window.png /tmp/sample.trc >/tmp/render.log 2>&1 ||
  fail "tessera shows no file"
[ -s /tmp/window.png ] || fail "tessera has rendered nothing"

# Removed: the programs are gone, what the administrator made stays. Purged: that is gone too.
files >/tmp/installed
cmp -s /tmp/before /tmp/installed && fail "the comparison of files sees nothing"
dpkg --remove "${names[@]}" >/tmp/remove.log 2>&1 || fail "the packages cannot be removed"
[ -e /var/lib/quor-$account/state.db ] && [ -d /etc/quor/keys ] || fail "a removal is not to purge"
dpkg -S /usr/bin/quord /usr/bin/trc 2>/dev/null && fail "programs are left after the removal"
dpkg --purge "${names[@]}" >/tmp/purge.log 2>&1 || fail "the packages cannot be purged"
files >/tmp/after
diff /tmp/before /tmp/after >/tmp/left || { cat /tmp/left >&2; fail "these files are left or changed"; }
say "removed and purged without a trace"
