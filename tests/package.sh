#!/usr/bin/env bash
# Makes the Debian package of a build folder, unpacks it into a clean folder tree, and runs from
# there the tour, which must print what the folder's own program prints, and the installed help. The
# shell completes the examples.
#   package.sh BUILD
set -euo pipefail
if ! command -v file >/dev/null; then
  printf 'package: Skipped\nThe program file is missing, with which cpack makes a Debian package\n'
  exit 77
fi
build=$(realpath "$1")
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
cpack --config "$build/CPackConfig.cmake" -G DEB -B "$tree/made" -D CPACK_STRIP_FILES=OFF >"$tree/log" 2>&1 ||
  { cat "$tree/log"; exit 1; }
dpkg-deb -x "$tree"/made/*.deb "$tree/root"
mox=$tree/root/usr/bin/mox
share=$tree/root/usr/share
cp -r "$share/doc/mox/examples" "$tree/kept"
"$mox" "$share/doc/mox/examples/tour" >"$tree/installed"
(cd "$tree/kept" && "$build/mox" tour) >"$tree/own"
cmp "$tree/installed" "$tree/own"
grep -q 'And all as it was' "$tree/installed"
cd "$tree/kept"
bash -c 'compopt() { :; }; . "$1"
  for word in "" stock/S --v; do
    COMP_WORDS=(mox "$word") COMP_CWORD=1; _mox; printf "%s\n" "${COMPREPLY[@]}" | sort
  done' bash "$share/bash-completion/completions/mox" >"$tree/completed"
diff - "$tree/completed" <<'END'
club
stock
tour
stock/STOCK
--version
END
mkdir "$tree/empty"
cd "$tree/empty"
echo HELP LIST | "$mox" >../help
grep -q 'Shows records' ../help
echo HELP LIST | "$build/mox" >../help
grep -q 'moxhelp.txt file missing' ../help
