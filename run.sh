#!/usr/bin/env bash
# Builds the operator panel and runs it on a simulated device.
set -euo pipefail

callerFolder=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")"
sourceFolder=$PWD
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
# shellcheck source=cmake/options.sh
source cmake/options.sh

usage() {
    cat <<'END'
Usage: ./run.sh [OPTION]...

Builds the operator panel, makes a simulated device and runs the panel on it until Ctrl-C or until
the panel reboots the device.

  --screen WxH     size of the panel's screen (default: as the device was made, else 800x480)
  --view VIEW      window  a window on this desktop (default where there is one)
                   vnc     a VNC server on this machine's loopback address (default elsewhere)
                   none    nothing to look at but screenshots
  --language LANG  the operator's language, such as de (default: this environment's, else English)
  --touch KIND     single, multi or none (default: as the device was made, else single)
  --root DIR       folder of the simulated device (default: ./device)
  --fresh          make the device anew, though it is there
END
}

usageError() {
    printf 'run.sh: %s (see ./run.sh --help)\n' "$*" >&2
    exit 2
}

screen='' view='' touch='' language='' root=$sourceFolder/device fresh=no
while (($#)); do
    option=${1%%=*}
    case $1 in
    -h | --help) usage; exit 0 ;;
    --fresh) fresh=yes; shift; continue ;;
    --screen=* | --view=* | --touch=* | --language=* | --root=*) value=${1#*=}; shift ;;
    --screen | --view | --touch | --language | --root)
        (($# > 1)) || usageError "option $1 needs a value"
        value=$2
        shift 2
        ;;
    *) usageError "unknown argument '$1'" ;;
    esac
    case $option in
    --screen)
        checkScreen "$value" 10
        screen=$value
        ;;
    --view)
        checkWord --view "$value" window vnc none
        view=$value
        ;;
    --touch)
        checkWord --touch "$value" single multi none
        touch=$value
        ;;
    --language)
        [[ $value =~ ^[a-z]{2,3}(_[A-Z]{2})?$ ]] || usageError "--language '$value' is no language such as de"
        language=$value
        ;;
    --root)
        [[ -n $value ]] || usageError "--root '' is no folder"
        root=$(cd "$callerFolder" && realpath -m -- "$value")
        ;;
    esac
done
view=$(chosenView "$view" "${DISPLAY:-}")

viewPackages=()
case $view in
window) viewPackages=(xserver-xephyr) ;;
vnc) viewPackages=(xvfb x11vnc) ;;
esac
installPackages "${BuildPackages[@]}" "${viewPackages[@]}"
configureAndBuild debug operator-panel panelctl firmware
panelctl=$sourceFolder/build/debug/simulator/panelctl

# ---- the simulated device ------------------------------------------------------------------------

mkdir -p -- "$root"
# The lock goes with the panel: two panels on one device would steal each other's touches.
exec 9<"$root"
flock -n 9 || die "another panel runs on the device in $root"

madeScreen='' madeTouch=''
if [[ -r $root/simulator/device ]]; then
    read -r madeScreen madeTouch <"$root/simulator/device"
fi
screen=${screen:-${madeScreen:-800x480}}
touch=${touch:-${madeTouch:-single}}
if [[ $fresh == yes || $screen != "$madeScreen" || $touch != "$madeTouch" ]]; then
    say "Making a simulated device in $root ($screen, touch: $touch)"
    "$panelctl" init "$root" --screen "$screen" --touch "$touch"
fi
"$panelctl" --root "$root" boot

# ---- everything that runs beside the panel -------------------------------------------------------

work=$(mktemp -d)
children=()
panel=''

cleanUp() {
    trap - EXIT INT TERM HUP
    local child
    for child in ${panel:+"$panel"} "${children[@]}"; do
        kill -TERM "$child" 2>/dev/null || true
    done
    for child in ${panel:+"$panel"} "${children[@]}"; do
        wait "$child" 2>/dev/null || true
    done
    rm -rf -- "$work"
}
trap cleanUp EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# waitForLine FILE: the first line that another process writes into FILE, within 10 s.
waitForLine() {
    local try line
    for ((try = 0; try < 100; ++try)); do
        if [[ -s $1 ]] && read -r line <"$1"; then
            printf '%s' "$line"
            return
        fi
        sleep 0.1
    done
    return 1
}

# startDisplay COMMAND...: starts an X server that picks its number itself, and shows on it.
startDisplay() {
    "$@" -displayfd 3 -nolisten tcp 3>"$work/display" >"$work/server.log" 2>&1 9<&- &
    children+=("$!")
    local number
    number=$(waitForLine "$work/display") \
        || { cat "$work/server.log" >&2; die "$1 does not start"; }
    display=:$number
}

display='' platform=''
case $view in
window)
    startDisplay Xephyr -screen "$screen" -dpi 96 -title "Operator panel $screen" -no-host-grab
    platform=xcb
    look="the window \"Operator panel $screen\""
    ;;
vnc)
    startDisplay Xvfb -screen 0 "${screen}x24" -dpi 96
    x11vnc -display "$display" -localhost -forever -shared -nopw -norc -quiet -noxdamage \
        -autoport 5900 >"$work/vnc" 2>"$work/vnc.log" 9<&- &
    children+=("$!")
    port=$(waitForLine "$work/vnc") || { cat "$work/vnc.log" >&2; die "x11vnc does not start"; }
    platform=xcb
    look="a VNC viewer at localhost:${port#PORT=}"
    look+=" (from elsewhere: ssh -L ${port#PORT=}:localhost:${port#PORT=} here)"
    ;;
none)
    # A path of its own, because a colon would end the file name in the platform argument.
    cat >"$work/screen.json" <<END
{"screens":[{"name":"panel","x":0,"y":0,"width":${screen%x*},"height":${screen#*x},
"logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]}
END
    platform=offscreen:configfile=$work/screen.json
    look="screenshots only"
    ;;
esac

# ---- the panel -----------------------------------------------------------------------------------

rebootsBefore=$(grep -c ' reboot' "$root/simulator/log" 2>/dev/null || true)
# Not the desktop's own settings: the panel looks as on a device.
[[ -z $language ]] || export LC_ALL=$language LANGUAGE=$language
env -u WAYLAND_DISPLAY -u QT_QPA_PLATFORMTHEME -u QT_STYLE_OVERRIDE -u QT_SCALE_FACTOR \
    PANEL_ROOT="$root" DISPLAY="$display" \
    "$sourceFolder/build/debug/operator-panel" -platform "$platform" </dev/null &
panel=$!

(
    exec 9<&-
    job=''
    trap 'kill ${job:+"$job"} 2>/dev/null; exit' TERM
    sleep 8 &
    job=$!
    wait "$job"
    "$panelctl" --root "$root" screenshot "$root/first-page.png" --wait 60 &
    job=$!
    if wait "$job"; then
        say "Screenshot of the first page: $root/first-page.png"
    fi
) &
children+=("$!")

control="${panelctl#"$sourceFolder"/}"
[[ $root == "$sourceFolder/device" ]] || control+=" --root '$root'"
cat <<END

Look at it:    $look
Stop the PLC:  $control plc stop   (start it again: plc start)
Press, shoot:  $control touch X Y; $control screenshot FILE.png   (all commands: --help)

END

status=0
wait "$panel" || status=$?
panel=''
if [[ $(grep -c ' reboot' "$root/simulator/log" 2>/dev/null || true) != "$rebootsBefore" ]]; then
    say "The panel rebooted the device; start ./run.sh again to see it come up"
    exit 0
fi
((status == 0)) || die "the panel ended with status $status"
