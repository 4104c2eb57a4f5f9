#!/usr/bin/env bash
# Builds the operator panel's packages for ARM and runs them on an emulated panel.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
# shellcheck source=cmake/options.sh
source cmake/options.sh

usage() {
    cat <<'END'
Usage: ./emulate.sh [OPTION]...

Builds the operator panel's packages for ARM, makes the image of an emulated panel that has them
installed, and runs it until Ctrl-C or until it is switched off.

  --screen WxH   size of the panel's screen (default: as the device was made, else 800x480)
  --view VIEW    window  a window on this desktop (default where there is one)
                 vnc     a VNC server on this machine's loopback address (default elsewhere)
                 none    nothing to look at but pictures
  --touch KIND   single, multi or none (default: as the device was made, else single)
  --lean         with the lean package installed
  --shell        a root shell of the device on this terminal (Ctrl-A X ends the emulator)
  --fresh        make the device anew, though it is there

A device keeps what it has saved until it is made anew: by --fresh, by another screen or touchscreen,
by --lean or without it again, or because the packages have changed. Everything lies in build/.
END
}

usageError() {
    printf 'emulate.sh: %s (see ./emulate.sh --help)\n' "$*" >&2
    exit 2
}

arguments=() image=() view=''
while (($#)); do
    option=${1%%=*}
    case $1 in
    -h | --help) usage; exit 0 ;;
    --lean)
        export EMULATOR_LEAN=1
        image=(--lean)
        shift
        continue
        ;;
    --fresh | --shell) arguments+=("$1"); shift; continue ;;
    --screen=* | --view=* | --touch=*) value=${1#*=}; shift ;;
    --screen | --view | --touch)
        (($# > 1)) || usageError "option $1 needs a value"
        value=$2
        shift 2
        ;;
    *) usageError "unknown argument '$1'" ;;
    esac
    case $option in
    --screen) checkScreen "$value" 100 ;;
    --view)
        checkWord --view "$value" window vnc none
        view=$value
        continue
        ;;
    --touch) checkWord --touch "$value" single multi none ;;
    esac
    arguments+=("$option" "$value")
done
view=$(chosenView "$view" "${DISPLAY:-}${WAYLAND_DISPLAY:-}")
viewPackages=()
[[ $view != window ]] || viewPackages=(qemu-system-gui)

emulator/image.sh "${image[@]}"
installPackages "${viewPackages[@]}"
exec python3 emulator/emulate.py --view "$view" "${arguments[@]}"
