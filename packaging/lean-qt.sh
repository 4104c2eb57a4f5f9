#!/usr/bin/env bash
# Makes the Qt that the presets lean and lean-armhf link the program with: static, from the source
# package of the very version that this machine has, with the features of packaging/lean/features.cmake,
# in build/lean-qt/ARCH. Installs what it needs. Does nothing where the folder is as it should be; one
# that was left half-way is gone on with.
set -euo pipefail
exec </dev/null

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
# shellcheck source=packaging/debian.sh
source packaging/debian.sh

usage() {
    cat <<'END'
Usage: packaging/lean-qt.sh [--arch ARCH]

Makes the lean Qt in build/lean-qt/ARCH.

  --arch ARCH      of this machine (default), or armhf
END
}

usageError() {
    printf 'lean-qt.sh: %s (see packaging/lean-qt.sh --help)\n' "$*" >&2
    exit 2
}

own=$(ownArchitecture)
architecture=$own
while (($#)); do
    case $1 in
    -h | --help) usage; exit 0 ;;
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

work=$PWD/build/lean-qt
qt=$work/$architecture
build=$qt.build
source=$work/source
features=$PWD/packaging/lean/features.cmake
# Where Qt believes to lie: nothing of it is there on a device, and no folder of this machine is
# named in the program.
prefix=/usr/lib/operator-panel/qt

# fetchSource: the source package, checked by apt and unpacked into $source. apt works with lists of
# its own: the machine's need not have the source packages.
fetchSource() {
    local apt=$work/apt log=$work/source.log keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    local signedBy=''
    [[ $(cat "$source/panel.version" 2>/dev/null) != "$sourceStamp" ]] || return 0
    say "Fetching the source of Qt $version"
    mkdir -p "$apt/lists/partial" "$apt/archives/partial"
    [[ ! -e $keyring ]] || signedBy="[signed-by=$keyring] "
    debianSources | sed "s,^deb ,deb-src $signedBy," >"$apt/sources.list"
    [[ -s $apt/sources.list ]] || die "apt has no archive of Debian among its sources"
    {
        printf 'Dir::State::status "/var/lib/dpkg/status";\n'
        printf 'Dir::%s "%s";\n' State::lists "$apt/lists" Cache "$apt" \
            Etc::sourcelist "$apt/sources.list" Etc::sourceparts -
        aptOptions
    } >"$apt/apt.conf"
    (
        export APT_CONFIG=$apt/apt.conf
        cd "$work"
        apt-get update -q && apt-get source -q --download-only "qt6-base=$version"
        rm -rf -- "$source.new"
        dpkg-source --no-check -x "qt6-base_${version#*:}.dsc" "$source.new"
    ) >"$log" 2>&1 || die "the source of Qt $version cannot be had: $(reasonIn "$log") (see $log)"
    # Functions that only programs of older versions call; they do not compile without toolbars.
    echo >"$source.new/src/widgets/compat/removed_api.cpp"
    printf '%s\n' "$sourceStamp" >"$source.new/panel.version"
    rm -rf -- "$source"
    mv -- "$source.new" "$source"
}

# configureQt: in a folder that is made anew unless it is for the same.
configureQt() {
    local flags log=$qt.configure.log options=()
    [[ ! -e $build/build.ninja || $(cat "$build/stamp" 2>/dev/null) != "$stamp" ]] || return 0
    rm -rf -- "$build"
    mkdir -p "$build"
    # As hardened as the rest of the program, and with no path of this machine in it.
    flags="-fstack-protector-strong -D_FORTIFY_SOURCE=2 -ffile-prefix-map=$source=qt"
    flags+=" -ffile-prefix-map=$build=qt"
    if [[ $architecture != "$own" ]]; then
        options+=("-DCMAKE_TOOLCHAIN_FILE=$PWD/cmake/$architecture.cmake")
    fi
    if command -v ccache >/dev/null; then
        options+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    cmake -S "$source" -B "$build" -G Ninja -C "$features" -DCMAKE_BUILD_TYPE=Release \
        -DQT_HOST_PATH=/usr -DCMAKE_INSTALL_PREFIX="$prefix" "-DCMAKE_C_FLAGS=$flags" \
        "-DCMAKE_CXX_FLAGS=$flags" "${options[@]}" >"$log" 2>&1 \
        || die "Qt cannot be configured: $(grep -m 1 '^ERROR' "$log" || tail -n 1 "$log") (see $log)"
    printf '%s\n' "$stamp" >"$build/stamp"
}

buildQt() {
    local log=$qt.log
    say "Building Qt $version for $architecture (about ten minutes on two cores)"
    nice cmake --build "$build" >"$log" 2>&1 \
        || die "building Qt failed: $(reasonIn "$log") (see $log; another run goes on from there)"
    rm -rf -- "$qt.new" "$qt"
    DESTDIR=$qt.new cmake --install "$build" >>"$log" 2>&1 || die "installing Qt failed (see $log)"
    mv -- "$qt.new$prefix" "$qt"
    printf '%s\n' "$stamp" >"$qt.stamp"
    rm -rf -- "$qt.new" "$build"
}

installPackages "${BuildPackages[@]}"
compiler=c++ recipe=("$features")
if [[ $architecture != "$own" ]]; then
    packaging/sysroot.sh
    compiler=arm-linux-gnueabihf-g++
    recipe+=("cmake/$architecture.cmake" "build/sysroot/$architecture.packages")
fi
oneAtATime lean-qt
version=$(dpkg-query -W -f '${source:Version}' qt6-base-dev)
# What it is made of and how; nothing else makes another one of it.
sourceStamp="$version $(declare -f fetchSource | sha256sum)"
stamp="$sourceStamp $("$compiler" -dumpfullversion) $prefix $(declare -f configureQt | sha256sum) \
$(cat "${recipe[@]}" | sha256sum)"
if [[ -d $qt && $(cat "$qt.stamp" 2>/dev/null) == "$stamp" ]]; then
    exit 0
fi
mkdir -p "$work"
rm -f -- "$qt.stamp"
fetchSource
configureQt
buildQt
