#!/usr/bin/env bash
# Checks the packages in build/package without installing them: lintian says nothing that is not
# overridden with a reason, programs and library have the defences of a release, and the desktop's
# files are right.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "check_packages: $*"; }

# The changes file names the source and all packages. Debian wants its first upload to name the request
# for the package; these are not uploaded there.
root=()
[ "$(id -u)" -ne 0 ] || root=(--allow-root)
lintian "${root[@]}" --fail-on error,warning --tag-display-limit 0 \
  --suppress-tags initial-upload-closes-no-bugs build/package/*.changes
say "lintian has no errors and no warnings"

unpacked=build/package/unpacked
rm -rf "$unpacked"
trap 'rm -rf "$unpacked"' EXIT
for package in build/package/*.deb; do
  [[ $package == *-dbgsym_* ]] || dpkg-deb -x "$package" "$unpacked"
done
mapfile -t built < <(find "$unpacked" -type f \( -path '*/usr/bin/*' -o -name 'libquor.so.*' -o -name 'quor.node' \))
[ ${#built[@]} -eq 7 ] || { say "5 programs, a library and an addon are expected: ${built[*]}"; exit 1; }
python3 packaging/check_hardening.py "${built[@]}"

# The project owns no domain that the name of the component could begin with.
appstreamcli validate --no-net --override cid-desktopapp-is-not-rdns=info \
  "$unpacked/usr/share/metainfo/tessera.metainfo.xml"
desktop-file-validate "$unpacked/usr/share/applications/tessera.desktop"
