#!/usr/bin/env bash
# Runs the panel's checks on the emulated device. The last line counts them.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

case " $* " in
*' --help '* | *' -h '*)
    cat <<'END'
Usage: emulator/test.sh [--lean] [--list] [--jobs N] [GROUP|CHECK]...

Makes the image of the emulated device and runs the checks on it, N at a time (4): all, those of the
groups named (1 to 7), or those named (--list tells them). With --lean the device has the lean package installed.

Environment: EMULATOR_PATIENCE multiplies every limit, for slow machines (1), on top of the
devices that share a processor.
END
    exit 0
    ;;
esac
arguments=() image=()
for word in "$@"; do
    case $word in
    --lean)
        export EMULATOR_LEAN=1
        image=(--lean)
        continue
        ;;
    --list | --jobs | [1-9]* | [a-z]*) ;;
    *) printf "test.sh: unknown argument '%s' (see emulator/test.sh --help)\n" "$word" >&2; exit 2 ;;
    esac
    arguments+=("$word")
done
if [[ " ${arguments[*]} " != *' --list '* ]]; then
    python3 emulator/test.py --list "${arguments[@]}" >/dev/null || exit # before minutes have gone into an image
    emulator/image.sh "${image[@]}"
fi
exec python3 emulator/test.py "${arguments[@]}"
