#!/usr/bin/env bash
# Installs the packages of build/package in a bare root and uses them there as their users do: see
# try_packages_inside.sh. Ends with an error when there is no way to make such a root.
#
# The root is a minimal system with what the packages depend on and a compiler. It is made once from
# this machine's own package sources, and again when these dependencies change.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "try_packages: $*"; }
fail() { say "$*" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || exec sudo "$0" "$@"
unshare --mount --pid --net --ipc --uts --fork true ||
  fail "cannot run: this machine gives no namespaces, so the packages were NOT tried"

mapfile -t packages < <(find build/package -maxdepth 1 -name '*.deb' ! -name '*-dbgsym_*' | sort)
[ ${#packages[@]} -eq 8 ] || fail "8 packages are expected in build/package, not ${#packages[@]}"

# What the packages need from elsewhere, without versions: dpkg checks these in the root.
names=$(for file in "${packages[@]}"; do dpkg-deb -f "$file" Package; done | paste -sd'|')
needs=$(for file in "${packages[@]}"; do dpkg-deb -f "$file" Pre-Depends Depends; done |
  sed -E 's/^(Pre-)?Depends://; s/,/\n/g' | sed -E 's/\|.*//; s/\(.*//; s/[: ]+any//; s/ //g' |
  grep -vxE "$names|" | sort -u | paste -sd,)
tools=systemd,procps,g++,cmake,make,pkg-config
key=$(sha256sum <<<"$needs $tools" | cut -c1-12)
base=build/bare-root-$key.tar
if [ ! -s "$base" ]; then
  say "making a bare root with: $needs"
  rm -f build/bare-root-*.tar
  sources=()
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/{debian,ubuntu}.sources; do
    [ ! -s "$file" ] || sources+=("$file")
  done
  # shellcheck source=/dev/null
  . /etc/os-release
  mmdebstrap --quiet --variant=minbase --mode=root --include="$needs,$tools" "$VERSION_CODENAME" \
    build/bare-root-part.tar "${sources[@]}" >build/bare-root.log 2>&1 ||
    { tail -n 5 build/bare-root.log >&2; fail "cannot make a bare root, so the packages were NOT tried"; }
  mv build/bare-root-part.tar "$base"
fi

root=build/bare-root
rm -rf "$root"
mkdir "$root"
trap 'rm -rf "$root"' EXIT
tar -xf "$base" -C "$root"
mkdir "$root/packages"
cp "${packages[@]}" packaging/try_packages_inside.sh "$root/packages"
# With the first process of the namespace all others end, and the mounts are gone.
unshare --mount --pid --net --ipc --uts --fork --kill-child bash -euc '
  mount --make-rprivate /
  mount -t proc proc "$1/proc"
  mount -t tmpfs -o mode=1777 tmpfs "$1/tmp"
  mount -t tmpfs -o mode=0755 tmpfs "$1/run"
  mkdir -p "$1/dev/shm"
  mount -t tmpfs -o mode=1777 tmpfs "$1/dev/shm"
  exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root \
    chroot "$1" bash /packages/try_packages_inside.sh' _ "$root"
