#!/usr/bin/env bash
# Measures the panel on the emulated device: seconds to the first frame, memory, idle load; and the
# size of its packages.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

case ${1:-} in
-h | --help)
    cat <<'END'
Usage: emulator/figures.sh [RUNS]

Prints the panel's figures on the emulated device, the medians of RUNS starts (3).
END
    exit 0
    ;;
'' | [1-9] | [1-9][0-9]) ;;
*) printf "figures.sh: '%s' is no number of runs (see --help)\n" "$1" >&2; exit 2 ;;
esac
(($# <= 1)) || { printf "figures.sh: unknown argument '%s' (see --help)\n" "$2" >&2; exit 2; }

emulator/image.sh
exec python3 emulator/figures.py "${1:-3}"
