#!/usr/bin/env bash
# What must hold of the packages in build/packages: lintian has nothing to say, the units can be
# read and their programs are there, the panel's unit is as closed as its children allow, the
# installed programs run, and the device's own firmware library goes before the simulated one. Where
# packaging/build.sh --lean has made lean packages: that their program is one small file.
set -euo pipefail
exec </dev/null

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

(($# == 0)) || { printf 'check.sh: unknown argument %s\n' "'$1'" >&2; exit 2; }
installPackages "${PackagingPackages[@]}"

packages=$PWD/build/packages
work=$packages/check
root=$work/root
own=$(dpkg --print-architecture)
version=$(dpkg-parsechangelog --show-field Version)

# fails WHAT OUTPUT: shows it and ends.
fails() {
    printf '%s\n' "$2" >&2
    die "$1"
}

checkPackages() {
    local found list=("$packages/operator-panel_${version}_"*.changes)
    [[ -e ${list[0]} ]] || die "no packages in build/packages; packaging/build.sh makes them"
    found=$(lintian --allow-root --fail-on none --tag-display-limit 0 "${list[@]}" 2>&1) || true
    [[ -z $found ]] || fails "lintian found something" "$found"
    for list in "$packages"/operator-panel{,-simulator}_"${version}"_*.deb; do
        [[ $(dpkg-deb --field "$list" Depends) == *libc6* ]] \
            || die "$list does not say which libraries it needs"
    done
}

# unpack: the packages for this machine, in a root of their own.
unpack() {
    local package
    rm -rf -- "$work"
    mkdir -p "$root"
    for package in "$packages"/operator-panel{,-simulator}_"${version}_$own".deb; do
        [[ -e $package ]] || die "$package is missing; packaging/build.sh makes it"
        dpkg-deb --extract "$package" "$root"
    done
}

# checkUnits ROOT: those of the packages that lie in ROOT.
checkUnits() {
    local found unit root=$1 units=$work/units
    rm -rf -- "$units"
    mkdir -p "$units"
    cp -r "$root"/lib/systemd/system/* "$units"
    sed -i "s,\(=\| \)/usr/\(bin/operator\|libexec\),\1$root/usr/\2,g" "$units"/*.service "$units"/*/*.conf
    found=$(systemd-analyze verify --man=no --recursive-errors=no "$units"/*.service 2>&1) \
        || fails "systemd does not understand the units" "$found"
    [[ -z $found ]] || fails "systemd does not like the units" "$found"
    for unit in operator-panel operator-panel-failure; do
        found=$(systemd-analyze security --no-pager --offline=true --threshold=50 \
            "$root/lib/systemd/system/$unit.service" 2>&1) || fails "$unit.service is too open" "$found"
    done
    # Any of these would hide /tmp from the panel, or its mounts from the others.
    ! grep -E '^(Private(Tmp|Devices|Mounts)|Protect(System|Home|Proc|Kernel|Control)|(Read|Inaccessible|Bind|Temporary|Exec|NoExec).*(Paths|FileSystem)|Root(Directory|Image)|MountFlags|(State|Cache|Logs)Directory|DynamicUser)' \
        "$root/lib/systemd/system/operator-panel.service" \
        || die "operator-panel.service would get a mount namespace"
    ! grep -rhE 'network|settle' "$root"/lib/systemd/system/operator-panel.service{,.d} | grep -E '^(After|Wants|Requires)=' \
        || die "operator-panel.service waits for the network or for udev to settle"
}

# fallback ENVIRONMENT...: what firmware-fallback makes of LD_LIBRARY_PATH.
fallback() {
    env -u LD_LIBRARY_PATH "$@" "$root/usr/libexec/operator-panel-simulator/firmware-fallback" \
        printenv LD_LIBRARY_PATH 2>/dev/null || true
}

checkFirmware() {
    local simulated
    simulated=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/operator-panel-simulator
    mkdir "$work/device" "$work/broken"
    cp "$root$simulated/libfirmware.so" "$work/device"
    echo "no library" >"$work/broken/libfirmware.so"
    [[ $(fallback -u XXX) == "$simulated" ]] || die "the simulated library is not the last resort"
    [[ $(fallback LD_LIBRARY_PATH=/nowhere) == "/nowhere:$simulated" ]] \
        || die "the simulated library is not the last resort"
    [[ $(fallback LD_LIBRARY_PATH="$work/device") == "$work/device" ]] \
        || die "the simulated library comes in the place of the device's own"
    [[ $(fallback LD_LIBRARY_PATH="$work/broken") == "$work/broken" ]] \
        || die "the simulated library hides a broken one of the device"
}

# checkPrograms: the installed panel on a simulated device, without a screen to look at.
checkPrograms() {
    local device=$work/simulated library panel command words
    library=$(dirname "$(find "$root/usr/lib" -name libfirmware.so)")
    "$root/usr/bin/panelctl" init "$device" --touch none
    # shellcheck disable=SC1003
    words=$(gzip -dc "$root/usr/share/man/man1/panelctl.1.gz" | tr -d '\\')
    for command in $("$root/usr/bin/panelctl" --help | sed -n 's/^  \([a-z-]*\)$/\1/p'); do
        grep -q "^\.BR* $command\b" <<<"$words" || die "panelctl(1) does not tell of $command"
    done
    PANEL_ROOT=$device LD_LIBRARY_PATH=$library "$root/usr/bin/operator-panel" -platform offscreen \
        >"$work/panel.log" 2>&1 &
    panel=$!
    # shellcheck disable=SC2064
    trap "kill -KILL $panel 2>/dev/null || true" EXIT
    "$root/usr/bin/panelctl" --root "$device" screenshot "$work/page.png" --wait 60 \
        || fails "the installed panel shows nothing" "$(cat "$work/panel.log")"
    kill -TERM "$panel"
    wait "$panel" || fails "the installed panel does not end as it should" "$(cat "$work/panel.log")"
    trap - EXIT
}

# checkLean: needs the firmware library, the C and C++ libraries, and tslib, whose plug-ins are shared
# objects that want its symbols from libts.so.0; on a panel it is smaller than 10 MB, and what the first
# frame needs lies first in it.
checkLean() {
    local package found program=$work/lean/usr/bin/operator-panel largest=$((10 * 1000 * 1000))
    local leastFirst=$((500 * 1000))
    for package in "$packages/lean/operator-panel-lean_${version}_"*.deb; do
        [[ -e $package ]] || return 0
        rm -rf -- "$work/lean"
        dpkg-deb --extract "$package" "$work/lean"
        found=$(readelf --wide --dynamic "$program" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' \
            | grep -vxE 'libfirmware\.so|libts\.so\.0|lib(c|m|stdc\+\+|gcc_s)\.so\.[16]|ld-linux.*') || true
        [[ -z $found ]] || fails "$package needs other libraries than it should" "$found"
        [[ $package != *_"$own".deb ]] || checkUnits "$work/lean"
        found=$(stat -c %s "$program")
        [[ $package == *_armhf.deb ]] || continue
        ((found <= largest)) || die "the program in $package has $found bytes"
        found=$(readelf --wide --sections "$program" \
            | awk '{sub(/.*\]/, "")} $1 == ".text.first_frame" {print $5}')
        ((0x0${found:-} >= leastFirst)) \
            || die "the program in $package has ${found:-no} bytes of code for the first frame: make it anew (packaging/build.sh --lean --arch armhf)"
    done
    found=$(lintian --allow-root --fail-on none --tag-display-limit 0 \
        "$packages/lean/operator-panel_${version}_"*.changes 2>&1) || true
    [[ -z $found ]] || fails "lintian found something in the lean packages" "$found"
}

say "Checking the packages"
unpack
checkPackages
checkUnits "$root"
checkFirmware
checkPrograms
checkLean
rm -rf -- "$work"
