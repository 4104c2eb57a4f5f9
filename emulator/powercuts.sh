#!/usr/bin/env bash
# Cuts the emulated device off at random moments while it stores something, and looks whether it comes
# up again as it should. Not a part of CI: a cut takes half a minute.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

usage() {
    cat <<'END'
Usage: emulator/powercuts.sh [--fs ext4|f2fs] [--jobs N] [--seed N] COUNT

Cuts the power COUNT times, in turn while a configuration is saved and while a calibration is stored
or accepted, switches on again, and checks that settings and calibration are whole, old or new, that
the first page is up and that a touch goes where the finger is.

  --fs KIND   the file system of the device (ext4)
  --jobs N    so many devices at a time (2)
  --seed N    begins with another moment (1); the same seed cuts at the same moments

Environment: EMULATOR_PATIENCE multiplies every limit, for slow machines (1).
END
}

usageError() {
    printf 'powercuts.sh: %s (see emulator/powercuts.sh --help)\n' "$*" >&2
    exit 2
}

fs=ext4 count='' options=()
while (($#)); do
    case $1 in
    -h | --help) usage; exit 0 ;;
    --fs | --jobs | --seed)
        (($# > 1)) || usageError "option $1 needs a value"
        if [[ $1 == --fs ]]; then
            [[ $2 =~ ^(ext4|f2fs)$ ]] || usageError "--fs '$2' is none of ext4, f2fs"
            fs=$2
        else
            [[ $2 =~ ^[1-9][0-9]{0,5}$ ]] || usageError "$1 '$2' is no number"
            options+=("$1" "$2")
        fi
        shift 2
        ;;
    *)
        [[ -z $count && $1 =~ ^[1-9][0-9]{0,5}$ ]] || usageError "unknown argument '$1'"
        count=$1
        shift
        ;;
    esac
done
[[ -n $count ]] || usageError "COUNT is missing"

emulator/image.sh --fs "$fs"
exec python3 emulator/powercuts.py --fs "$fs" "${options[@]}" "$count"
