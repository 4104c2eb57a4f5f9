#!/usr/bin/env bash
# Makes the Debian packages of the panel and of its simulator in build/packages. Installs what it
# needs; for ARM it makes the sysroot, for the lean package its Qt, too. Where sources and packages have not changed it does
# nothing.
set -euo pipefail
exec </dev/null

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
# shellcheck source=packaging/debian.sh
source packaging/debian.sh

usage() {
    cat <<'END'
Usage: packaging/build.sh [--arch ARCH] [--lean]

Makes the Debian packages in build/packages.

  --arch ARCH      of this machine (default), or armhf
  --lean           the package operator-panel-lean instead, in build/packages/lean
END
}

usageError() {
    printf 'build.sh: %s (see packaging/build.sh --help)\n' "$*" >&2
    exit 2
}

own=$(ownArchitecture)
architecture=$own lean=''
while (($#)); do
    case $1 in
    -h | --help) usage; exit 0 ;;
    --lean) lean=yes; shift ;;
    --arch=*) architecture=${1#*=}; shift ;;
    --arch)
        (($# > 1)) || usageError "option $1 needs a value"
        architecture=$2
        shift 2
        ;;
    *) usageError "unknown argument '$1'" ;;
    esac
done
checkArchitecture "$architecture"

installPackages "${BuildPackages[@]}" "${PackagingPackages[@]}"
options=(--no-sign --build=full)
sysrootStamp='' results=$PWD/build/packages
if [[ $architecture != "$own" ]]; then
    packaging/sysroot.sh
    export PANEL_SYSROOT=$PWD/build/sysroot/$architecture
    sysrootStamp=$(cat "$PANEL_SYSROOT.stamp")
    # What it is built with is in the sysroot, of which dpkg knows nothing.
    options=(--no-sign --build=any --host-arch "$architecture" --no-check-builddeps)
fi
if [[ $lean ]]; then
    packaging/lean-qt.sh --arch "$architecture"
    export PANEL_LEAN_QT=$PWD/build/lean-qt/$architecture
    sysrootStamp+=$(cat "$PANEL_LEAN_QT.stamp")
    options=(--build-profiles=pkg.operator-panel.lean "${options[@]/--build=full/--build=any}")
    results+=/lean
fi
# Debug symbols double the time and are of use to who looks for a fault: ask for them with
# DEB_BUILD_OPTIONS= in the environment.
export DEB_BUILD_OPTIONS=${DEB_BUILD_OPTIONS-noautodbgsym}
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    CCACHE_DIR=$(ccache --get-config cache_dir) # debhelper has a home of its own
    export CCACHE_DIR
fi

# dpkg-buildpackage writes beside the folder that it works in: that is a copy.
work=$results/$architecture
version=$(dpkg-parsechangelog --show-field Version)
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog --show-field Timestamp)
export SOURCE_DATE_EPOCH
tree=$work/operator-panel-$version
oneAtATime "packages$lean-$architecture"
mkdir -p "$work"
# Neither what git holds nor what a build or a simulated device has left.
archiveSources() {
    tar --create --sort=name --owner=0 --group=0 --numeric-owner --mtime="@$SOURCE_DATE_EPOCH" \
        --exclude-vcs --exclude=./build --exclude=./device --exclude='*.orig' \
        --exclude=__pycache__ "$@" .
}
archiveSources >"$work/sources.tar" || die "the sources cannot be copied to $work"
# What is never in a package is no reason to build anew.
stamp="$(archiveSources --exclude=./emulator --exclude=./emulate.sh --exclude=./tests \
    --exclude=./benchmarks --exclude=./docs --exclude='./*.md' --exclude='./.*' | sha256sum) $DEB_BUILD_OPTIONS"
changes=operator-panel_${version}_$architecture.changes
isComplete() {
    [[ $(cat "$work/stamp" 2>/dev/null) == "$stamp $sysrootStamp" ]] \
        && (cd "$results" && sed -n '/^Checksums-Sha256:/,/^[^ ]/s/^ \([^ ]*\) [0-9]* /\1  /p' \
            "$changes" | sha256sum --check --status)
}
if isComplete 2>/dev/null; then
    rm "$work/sources.tar"
    exit 0
fi
say "Building the ${lean:+lean }packages for $architecture"
rm -rf -- "$work/stamp" "$work"/operator-panel*
mkdir "$tree"
tar -x -f "$work/sources.tar" -C "$tree"
rm "$work/sources.tar"
(cd "$tree" && dpkg-buildpackage "${options[@]}") >"$work/log" 2>&1 \
    || die "building the packages for $architecture failed: $(reasonIn "$work/log") (see $work/log)"
rm -rf -- "$tree" "$results"/operator-panel*_*_"$architecture".*
mv -- "$work"/operator-panel* "$results"
printf '%s %s\n' "$stamp" "$sysrootStamp" >"$work/stamp"
