#!/usr/bin/env bash
# Measures the panel on the emulated device: seconds to the first frame, memory, idle load; and the
# size of its packages. Or compares the lean program with the ordinary one.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

usage() {
    cat <<'END'
Usage: emulator/figures.sh [RUNS]
       emulator/figures.sh --lean [--counted] [PAIRS [BOOTS]]

Prints the panel's figures on the emulated device, the medians of RUNS starts (3). With --lean it
compares the lean program with the ordinary one, in PAIRS of starts (15), and how soon after the start
of init each is seen, in so many BOOTS of each image (5). --counted does all that once more with a
clock that counts the device's instructions, which knows nothing of what else runs on this machine.
END
}

usageError() {
    printf 'figures.sh: %s (see emulator/figures.sh --help)\n' "$*" >&2
    exit 2
}

lean='' counted=() numbers=()
for word in "$@"; do
    case $word in
    -h | --help) usage; exit 0 ;;
    --lean) lean=yes ;;
    --counted) counted=(counted) ;;
    [1-9] | [1-9][0-9]) numbers+=("$word") ;;
    *) usageError "'$word' is no number of runs" ;;
    esac
done
[[ $lean || ${#counted[@]} -eq 0 ]] || usageError "--counted goes with --lean"
((${#numbers[@]} <= (${lean:+1} + 1))) || usageError "too many numbers"

emulator/image.sh
[[ $lean ]] || exec python3 emulator/figures.py "${numbers[0]:-3}"
emulator/image.sh --lean
exec python3 emulator/compare.py "${numbers[0]:-15}" "${numbers[1]:-5}" "${counted[@]}"
