#!/usr/bin/env bash
# Makes packaging/lean/firstframe.txt: the functions of the lean program that run until its first
# frame, as the emulated device runs them.
set -euo pipefail
exec </dev/null

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

case ${1:-} in
-h | --help)
    cat <<'END'
Usage: emulator/firstframe.sh

Builds the lean program for ARM, starts it on the emulated device, and writes the functions that run
until the first frame to packaging/lean/firstframe.txt, which the next link reads. Wanted when another
Qt or other first pages make a cold start read more of the program (emulator/figures.sh --lean).
END
    exit 0
    ;;
'') ;;
*) printf "firstframe.sh: unknown argument '%s' (see emulator/firstframe.sh --help)\n" "$1" >&2; exit 2 ;;
esac

emulator/image.sh
packaging/lean-qt.sh --arch armhf # and the sysroot
configureAndBuild lean-armhf operator-panel
list=packaging/lean/firstframe.txt
new=build/emulator/firstframe.new
python3 emulator/firstframe.py >"$new"
mv -- "$new" "$list"
say "$(grep -vc '^#' "$list") functions in $list"
