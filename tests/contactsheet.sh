#!/usr/bin/env bash
# Pictures of every page at every screen class: tests/contactsheet.sh FOLDER [--compare OLDER].
# FOLDER gets one picture of each page and, for each screen, sheet-SCREEN.png with all of them.
# With --compare they are compared to the pixel with those that this made in OLDER: those that
# differ or are missing are named, and the result is 1.
set -euo pipefail

usage() {
    printf 'usage: %s FOLDER [--compare OLDER]\n' "${0##*/}" >&2
    exit 2
}

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
configureAndBuild debug tst_everypage
build/debug/tests/tst_everypage -silent || die "some pages are not as they should be"
say "$(find "$PANEL_SCREENSHOTS" -name 'sheet-*.png' | wc -l) sheets in $PANEL_SCREENSHOTS"
