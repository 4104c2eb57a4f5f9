# Sourced by run.sh, test.sh and .ci/run: what this project needs of the system, and how to get it.
# shellcheck shell=bash disable=SC2034

# What it takes to build the panel, to run it on a simulated device and to test it.
BuildPackages=(build-essential cmake ninja-build pkg-config qt6-base-dev qt6-base-private-dev
    libgl-dev libts-dev qt6-l10n-tools ttf-bitstream-vera)
# What it takes to make the Debian packages, for this machine and for ARM.
PackagingPackages=(debhelper lintian systemd)
CrossPackages=(crossbuild-essential-armhf fakeroot gpg mmdebstrap)
# What a program for ARM is compiled against, but for the compiler's own C++ library.
SysrootPackages=(libc6-dev qt6-base-dev qt6-base-private-dev libgl-dev libvulkan-dev libts-dev)
# What it takes to make an image of the emulated device and to run it.
EmulatorPackages=(python3 qemu-system-arm qemu-utils device-tree-compiler e2fsprogs f2fs-tools)
# What .ci/run needs besides.
CheckPackages=(git clang-format clang-tidy shellcheck libbenchmark-dev)

say() {
    printf '==> %s\n' "$*"
}

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# asRoot COMMAND...: what only root may do.
asRoot() {
    if ((EUID == 0)); then
        "$@"
    else
        command -v sudo >/dev/null || die "not root and no sudo here to run: $*"
        sudo "$@"
    fi
}

# refreshPackageLists: has apt look at what there is.
refreshPackageLists() {
    asRoot apt-get update -q </dev/null \
        || say "apt-get update failed; trying with the package lists that are here"
}

# installPackages NAME...: installs those that are not there yet; asks nothing.
installPackages() {
    local missing=() name
    for name; do
        if [[ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" != installed ]]; then
            missing+=("$name")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    command -v apt-get >/dev/null \
        || die "this is no Debian; install the equivalents of: ${missing[*]}"
    ((EUID == 0)) || command -v sudo >/dev/null \
        || die "not root and no sudo here; have these installed: ${missing[*]}"
    say "Installing ${missing[*]}"
    refreshPackageLists
    asRoot env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}" </dev/null \
        || die "apt could not install: ${missing[*]}"
}

# configureAndBuild PRESET TARGET...: TARGET is what cmake --build calls it; none means everything.
configureAndBuild() {
    local preset=$1 target targets=()
    shift
    for target; do targets+=(--target "$target"); done
    say "Building ($preset)"
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    fi
    local output
    output=$(cmake --preset "$preset" 2>&1) || { printf '%s\n' "$output" >&2; die "configuring failed"; }
    cmake --build --preset "$preset" "${targets[@]}" || die "building failed"
}
