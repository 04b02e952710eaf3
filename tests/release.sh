#!/usr/bin/env bash
# Makes the packages of a build folder that has no sanitizers, and looks at them; then tries an
# installation into other folders. lintian is asked where it is installed.
#   release.sh BUILD
set -euo pipefail
root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath "$1")
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT

# The version stands in several places.
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$build/CMakeCache.txt")
grep -q "^## $version, " "$root/CHANGELOG.md"
[ "$(grep -m1 '^## ' "$root/CHANGELOG.md" | cut -d' ' -f2)" = "$version," ]
grep -q "\"version\": \"$version\"" "$root/packaging/editors/vscode/package.json"
grep -q "\"MOX ${version%.*}\"" "$root/man/mox.1"
grep -q "version=\"${version%.*}.0.${version##*.}\"" "$root/src/host/mox.manifest"

# The sources.
cpack --config "$build/CPackSourceConfig.cmake" -B "$made" >/dev/null 2>&1
tar tzf "$made/mox-$version.tar.gz" >"$made/names"
grep -qx "mox-$version/src/session/options.h" "$made/names"
if grep -E "^mox-$version/(build|\.git/)|\.ndx\$" "$made/names" | grep -v '/tests/data/'; then
  exit 1
fi

# The Debian package.
if command -v dpkg-deb >/dev/null; then
  cpack --config "$build/CPackConfig.cmake" -G DEB -B "$made" >/dev/null 2>&1
  if command -v lintian >/dev/null; then
    lintian --fail-on error,warning "$made"/*.deb
  fi
fi

# Folders of one's own: below the prefix, and absolute.
for folders in 'app/program app/data' "bin $made/abs"; do
  set -- $folders
  cmake -DCMAKE_INSTALL_BINDIR="$1" -DCMAKE_INSTALL_DATADIR="$2" "$build" >/dev/null
  cmake --build "$build" >/dev/null
  cmake --install "$build" --prefix "$made/tree" >/dev/null
  echo HELP LIST | (cd "$made" && "tree/$1/mox") >"$made/help"
  grep -q 'Shows records' "$made/help"
done
cmake -DCMAKE_INSTALL_BINDIR=bin -DCMAKE_INSTALL_DATADIR=share "$build" >/dev/null
cmake --build "$build" >/dev/null
