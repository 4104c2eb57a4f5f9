#!/usr/bin/env bash
# Makes what the preset armhf compiles against: headers and libraries of a panel with Debian, in
# build/sysroot/armhf. Installs what it needs. Does nothing where the folder is as it should be;
# one that has been left half-way is made anew.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
# shellcheck source=packaging/debian.sh
source packaging/debian.sh

case ${1:-} in
'') ;;
-h | --help)
    printf 'Usage: packaging/sysroot.sh\n\nMakes build/sysroot/armhf for the preset armhf.\n'
    exit 0
    ;;
*) printf 'sysroot.sh: unknown argument %s (see --help)\n' "'$1'" >&2; exit 2 ;;
esac

installPackages "${BuildPackages[@]}" "${CrossPackages[@]}"

architecture=armhf
sysroot=$PWD/build/sysroot/$architecture
compiler=arm-linux-gnueabihf-g++
packages=("${SysrootPackages[@]}" "libstdc++-$("$compiler" -dumpversion)-dev")

# describeLibraries FOLDER: what dpkg-shlibdeps wants to be told about the libraries of the sysroot:
# which package each is of, and which version of that has the symbols. dpkg itself knows nothing
# here, because the packages were only unpacked.
describeLibraries() {
    local folder=$1 name version packageArchitecture archive id
    rm -rf -- "$folder"
    mkdir -p "$folder/info" "$folder/updates"
    printf '%s\n' "$(dpkg --print-architecture)" "$architecture" >"$folder/arch"
    echo 1 >"$folder/info/format" # names of packages that any number of architectures may have
    while read -r name version packageArchitecture; do
        archive=$DownloadFolder/$architecture/${name}_${version//:/%3a}_$packageArchitecture.deb
        dpkg-deb --control "$archive" "$folder/control"
        id=$name
        ! grep -q '^Multi-Arch: same' "$folder/control/control" || id+=:$packageArchitecture
        if [[ -e $folder/control/shlibs || -e $folder/control/symbols ]]; then
            sed '/^Package:/a Status: install ok installed' "$folder/control/control"
            echo
            # A merged /usr: the library is found under both names.
            dpkg-deb --fsys-tarfile "$archive" | tar -t | grep -F .so \
                | sed -n "s,^\.\(/usr\)\?,,; h; s,^,$sysroot,p; g; s,^,$sysroot/usr,p" >"$folder/info/$id.list"
            for file in shlibs symbols; do
                [[ ! -e $folder/control/$file ]] || mv "$folder/control/$file" "$folder/info/$id.$file"
            done
        fi
        rm -r "$folder/control"
    done <"$sysroot.packages" >"$folder/status"
}

oneAtATime sysroot
stamp="$sysroot $(debianSources) ${packages[*]}" # describeLibraries() writes whole paths
if [[ -d $sysroot && $(cat "$sysroot.stamp" 2>/dev/null) == "$stamp" ]]; then
    exit 0
fi
say "Making the sysroot for $architecture"
rm -f "$sysroot.stamp"
debianTree "$sysroot" "$architecture" "${packages[@]}"
describeLibraries "$sysroot.dpkg"
printf '%s\n' "$stamp" >"$sysroot.stamp"
