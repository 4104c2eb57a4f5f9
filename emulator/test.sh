#!/usr/bin/env bash
# Runs the panel's checks on the emulated device. The last line counts them.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

case " $* " in
*' --help '* | *' -h '*)
    cat <<'END'
Usage: emulator/test.sh [--list] [--jobs N] [GROUP|CHECK]...

Makes the image of the emulated device and runs the checks on it, N at a time (3): all, those of the
groups named (1 to 7), or those named (--list tells them).

Environment: EMULATOR_PATIENCE multiplies every limit, for slow machines (1).
END
    exit 0
    ;;
esac
for word in "$@"; do
    case $word in
    --list | --jobs | [1-9]* | [a-z]*) ;;
    *) printf "test.sh: unknown argument '%s' (see emulator/test.sh --help)\n" "$word" >&2; exit 2 ;;
    esac
done
if [[ " $* " != *' --list '* ]]; then
    python3 emulator/test.py --list "$@" >/dev/null || exit # before minutes have gone into an image
    emulator/image.sh
fi
exec python3 emulator/test.py "$@"
