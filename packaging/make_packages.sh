#!/usr/bin/env bash
# Makes the source archive and the Debian packages of this tree in build/package.
#
# The version is that of CMakeLists.txt. A tree that is not the tagged one has the time and the commit
# behind it, and sorts before the release.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

out=$PWD/build/package
tree=$out/tessera # the same name each time, for the compiler cache
version=$(sed -n 's/^project(tessera VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
maintainer=$(sed -n 's/^Maintainer: //p' packaging/debian/control)
rm -rf "$out"
mkdir -p "$out"

# Changes that are not committed yet are in it, but git must know new files.
if [ -e .git ]; then
  unknown=$(git ls-files --others --exclude-standard)
  [ -z "$unknown" ] || { printf 'git does not know: %s\n' "$unknown" >&2; exit 1; }
  commit=$(git stash create "packages")
  commit=${commit:-HEAD}
  if ! git tag --points-at "$commit" | grep -qx "v$version"; then
    version+=$(TZ=UTC git show -s --format='~git%cd.%h' --date=format-local:%Y%m%d%H%M "$commit")
  fi
  seconds=$(git show -s --format=%ct "$commit")
  git archive --prefix="tessera-$version/" "$commit" | xz -T2 -3 >"$out/tessera_$version.orig.tar.xz"
else
  seconds=$(stat -c %Y CMakeLists.txt)
  tar --exclude=./build --transform="s,^\.,tessera-$version," -cJf "$out/tessera_$version.orig.tar.xz" .
fi

mkdir "$tree"
tar -xf "$out/tessera_$version.orig.tar.xz" -C "$tree" --strip-components=1
cp -r packaging/debian "$tree/debian"
cat >"$tree/debian/changelog" <<END
tessera ($version-1) unstable; urgency=medium

  * Packages of this version. What is new in it is in changelog.gz beside
    this file.

 -- $maintainer  $(date -R -u -d "@$seconds")
END

# debhelper gives the build a home of its own.
if command -v ccache >/dev/null; then
  CCACHE_DIR=$(ccache -k cache_dir)
  export CCACHE_DIR
fi
cd "$tree"
dpkg-buildpackage -us -uc >"$out/build.log" 2>&1 || { tail -n 40 "$out/build.log" >&2; exit 1; }
rm -rf "$tree"
