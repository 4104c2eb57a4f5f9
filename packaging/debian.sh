# Sourced after cmake/packages.sh, in the project's folder: makes trees of Debian packages of another
# architecture, from where this machine's own packages come from. No package of a tree is configured
# and none of its programs is run, so neither root nor an emulator is needed.
# shellcheck shell=bash

# Where downloads are kept between runs, and the locks of what must not be made twice at a time.
DownloadFolder=$PWD/build/downloads

# ownArchitecture: Debian's name of this machine's.
ownArchitecture() {
    dpkg --print-architecture || die "this is no Debian: dpkg is missing"
}

# checkArchitecture NAME: of what the scripts can build for; else their usageError TEXT.
checkArchitecture() {
    local own
    own=$(ownArchitecture)
    [[ $1 == "$own" || $1 == armhf ]] || usageError "--arch '$1' is neither $own nor armhf"
}

# debianSources: the lines of a sources.list for the main archive that apt uses on this machine. The
# security archive is left out: it need not hold the other architecture, and its index may not match.
debianSources() {
    local codename
    # shellcheck source=/dev/null
    codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(ORIGIN) $(LABEL) deb $(REPO_URI) $(CODENAME) $(COMPONENT)' \
        'Identifier: Packages' "Codename: $codename" 2>/dev/null \
        | sed -n 's/^Debian Debian //p' | sort -u
}

# aptOptions: what apt needs to reach that archive, one option a line.
aptOptions() {
    # The index of a release that has been out for long, or of a copy, is no longer dated anew.
    printf '%s\n' 'Acquire::Check-Valid-Until "false";' 'Acquire::Languages "none";' \
        'APT::Sandbox::User "root";'
    apt-config dump | grep -Ei '^Acquire::[^ ]*(proxy|retries|timeout|verify|cainfo)[^ ]* ' || true
}

# oneAtATime NAME: waits until no other run of these scripts makes NAME, and keeps others from it
# until this script has ended.
oneAtATime() {
    mkdir -p "$DownloadFolder"
    exec 8>"$DownloadFolder/$1.lock"
    flock 8
}

# debianTree FOLDER ARCHITECTURE PACKAGE...: unpacks the packages, with what they depend on, into
# FOLDER, an absolute path; what is there is replaced when the new tree is whole. FOLDER.packages
# then lists NAME VERSION ARCHITECTURE of what is in it. Downloads are kept, also those of a run that
# was interrupted. Who owns which file is remembered by root, or by a fakeroot around the caller.
debianTree() {
    local folder=$1 architecture=$2 sources option
    shift 2
    local new=$folder.new log=$folder.log archives=$DownloadFolder/$architecture
    local options=() fake=()
    ((EUID == 0)) || fake=(fakeroot)
    sources=$(debianSources)
    if [[ -z $sources ]]; then
        refreshPackageLists
        sources=$(debianSources)
    fi
    [[ -n $sources ]] || die "apt has no archive of Debian among its sources"
    while read -r option; do options+=("--aptopt=$option"); done < <(aptOptions)
    mkdir -p "$archives/partial" "${folder%/*}"
    rm -rf -- "$new"
    # apt downloads into the folder where the packages stay; unlinked before mmdebstrap tidies up.
    # Only apt knows which of them belong to the tree. mmdebstrap's shell expands the hooks.
    # shellcheck disable=SC2016
    "${fake[@]}" env Archives="$archives" Packages="$*" List="$new.packages" mmdebstrap \
        --mode=root --variant=extract --format=directory --architectures="$architecture" \
        --skip=check/qemu,chroot/mount,output/dev "${options[@]}" \
        --hook-dir=/usr/share/mmdebstrap/hooks/merged-usr \
        --setup-hook='rm -rf "$1/var/cache/apt/archives"; ln -s "$Archives" "$1/var/cache/apt/archives"' \
        --extract-hook='APT_CONFIG=$MMDEBSTRAP_APT_CONFIG apt-get -s install $Packages >"$List"' \
        --extract-hook='rm "$1/var/cache/apt/archives"' \
        --include="$*" '' "$new" - <<<"$sources" >"$log" 2>&1 \
        || die "unpacking packages for $architecture failed: $(reasonIn "$log") (see $log)"
    # Behind the bracket apt may tell which dependencies are still open.
    sed -n 's/^Inst \([^ ]*\) (\([^ ]*\) [^)]*\[\([^]]*\)\]).*/\1 \2 \3/p' "$new.packages" \
        >"$folder.packages"
    rm -rf -- "$folder" "$new.packages"
    mv -- "$new" "$folder"
}

# reasonIn LOG: the line in which apt, a compiler or a packaging tool says why it failed. On a full
# disk the first to notice is not the one that gives up.
reasonIn() {
    grep -m 1 -F 'No space left' "$1" || grep -m 1 -E '^E: |[Ee]rror: ' "$1" || tail -n 1 "$1"
}
