#!/usr/bin/env bash
# Pictures of every page at every screen class: tests/contactsheet.sh [--lean] FOLDER [--compare OLDER].
# FOLDER gets one picture of each page and, for each screen, sheet-SCREEN.png with all of them.
# With --compare they are compared to the pixel with those that this made in OLDER: those that
# differ or are missing are named, and the result is 1. With --lean it is the lean program's pages that
# are painted, with the Qt of packaging/lean-qt.sh.
set -euo pipefail

usage() {
    printf 'usage: %s [--lean] FOLDER [--compare OLDER]\n' "${0##*/}" >&2
    exit 2
}

preset=debug
if [[ ${1:-} == --lean ]]; then
    preset=lean
    shift
fi
(($# == 1)) || [[ $# == 3 && $2 == --compare ]] || usage
[[ $1 != -* ]] || usage
mkdir -p -- "$1"
PANEL_SCREENSHOTS=$(realpath -- "$1")
export PANEL_SCREENSHOTS
if (($# == 3)); then
    PANEL_REFERENCE=$(realpath -e -- "$3")
    export PANEL_REFERENCE
fi

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
installPackages "${BuildPackages[@]}"
[[ $preset != lean ]] || packaging/lean-qt.sh
configureAndBuild "$preset" tst_everypage
"build/$preset/tests/tst_everypage" -silent || die "some pages are not as they should be"
say "$(find "$PANEL_SCREENSHOTS" -name 'sheet-*.png' | wc -l) sheets in $PANEL_SCREENSHOTS"
