#!/usr/bin/env bash
# Makes all that the emulated device boots from, below build/emulator/image: the root file system with
# the panel's packages installed, the kernel, the initial RAM disk. Installs what it needs. Does
# nothing where everything is as it should be; what was left half-way is made anew.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh
# shellcheck source=packaging/debian.sh
source packaging/debian.sh

usage() {
    cat <<'END'
Usage: emulator/image.sh [--lean] [--fs ext4|f2fs]

Makes what the emulated device boots from, with a root file system of the kind named (ext4). With
--lean the lean package is installed in it in the place of the ordinary one.
END
}

fs=ext4 lean=()
while (($#)); do
    case $1 in
    -h | --help) usage; exit 0 ;;
    --lean) lean=(--lean); shift ;;
    --fs=ext4 | --fs=f2fs) fs=${1#*=}; shift ;;
    --fs)
        [[ ${2:-} =~ ^(ext4|f2fs)$ ]] \
            || { echo "image.sh: --fs '${2:-}' is none of ext4, f2fs" >&2; exit 2; }
        fs=$2
        shift 2
        ;;
    *) printf "image.sh: unknown argument '%s' (see --help)\n" "$1" >&2; exit 2 ;;
    esac
done

installPackages "${BuildPackages[@]}" "${CrossPackages[@]}" "${PackagingPackages[@]}" \
    "${EmulatorPackages[@]}"

architecture=armhf
libraries=usr/lib/arm-linux-gnueabihf
work=$PWD/build/emulator
image=$work/image
tree=$work/tree
root=$work/root

# What the device is made of beside the panel's own packages, whose dependencies among these are
# installed by nobody else.
treePackages=(linux-image-armmp busybox-static systemd systemd-sysv udev kmod mount util-linux
    coreutils dash mawk sed grep findutils procps base-files base-passwd libqt6widgets6
    qt6-qpa-plugins libts0 libts-bin libstdc++6
    libsystemd0 ttf-bitstream-vera)
# In the order in which they are loaded; what they need comes with them.
drivers=(virtio_mmio virtio_blk crc32c_generic ext4 crc32_generic f2fs virtio_console virtio_net
    virtio_gpu virtio_input evdev uinput)
# A panel has neither manuals nor a 3D library; left out, the image is made and read faster.
unneeded=(usr/share/{doc,man,info,locale,i18n,zoneinfo,perl,lintian,bug,mime,icons,bash-completion}
    usr/lib/{modules,linux-image-*,initramfs-tools} boot var/lib/dpkg var/cache/apt var/lib/apt
    "$libraries"/{dri,perl,perl-base,gconv,libLLVM*,libz3*,libperl*}
    usr/lib/udev/hwdb.d usr/lib/systemd/{catalog,system-generators})
# Units that nobody needs here and that take seconds on an emulated processor.
unneededUnits=(systemd-sysctl.service getty@.service serial-getty@.service systemd-logind.service systemd-networkd.service
    systemd-update-utmp.service systemd-update-utmp-runlevel.service systemd-hwdb-update.service
    systemd-random-seed.service systemd-journal-flush.service systemd-journal-catalog-update.service
    systemd-update-done.service systemd-sysusers.service ldconfig.service systemd-binfmt.service
    systemd-pstore.service systemd-firstboot.service systemd-machine-id-commit.service
    systemd-remount-fs.service kmod-static-nodes.service systemd-modules-load.service
    modprobe@.service getty-static.service sys-kernel-debug.mount sys-kernel-tracing.mount sys-kernel-config.mount
    sys-fs-fuse-connections.mount dev-hugepages.mount dev-mqueue.mount
    proc-sys-fs-binfmt_misc.automount systemd-user-sessions.service systemd-rfkill.socket
    systemd-ask-password-wall.path systemd-ask-password-console.path systemd-initctl.socket
    apt-daily.timer apt-daily-upgrade.timer dpkg-db-backup.timer e2scrub_all.timer fstrim.timer)

# ownImage: keeps others from running devices from the image while it changes. They run from it when
# it cannot be had.
ownImage() {
    exec 7>"$image/in-use"
    flock -n 7 || die "an emulated device runs from the image that has to be made anew; end it first"
}

# makeTree: the packages of Debian, unpacked, with kernel and drivers apart.
makeTree() {
    local stamp
    stamp="$(debianSources) ${treePackages[*]} ${drivers[*]} ${unneeded[*]}
$(sha256sum packaging/debian.sh emulator/initrd.py emulator/guest/init)"
    [[ $(cat "$tree.stamp" 2>/dev/null) != "$stamp" ]] || return 0
    say "Unpacking what the emulated device is made of"
    ownImage
    rm -f "$tree.stamp"
    debianTree "$tree" "$architecture" "${treePackages[@]}"
    cp "$(printf '%s\n' "$tree"/boot/vmlinuz-* | tail -n 1)" "$image/vmlinuz.new"
    mv "$image/vmlinuz.new" "$image/vmlinuz"
    python3 emulator/initrd.py modules "$tree" "$image/initrd.base" "${drivers[@]}"
    # shellcheck disable=SC2048,SC2086 # patterns, which are to match in there
    (cd "$tree" && rm -rf -- ${unneeded[*]})
    printf '%s\n' "$stamp" >"$tree.stamp"
}

# valuesOf KEY UNIT: what the unit's file says behind KEY=.
valuesOf() {
    sed -n "s/^$1=//p" "$2"
}

# enableUnit NAME: as systemctl enable does.
enableUnit() {
    local unit target
    unit=$(find "$root/usr/lib/systemd/system" "$root/etc/systemd/system" -name "$1" | head -n 1)
    [[ -n $unit ]] || die "the packages have no unit $1"
    for target in $(valuesOf WantedBy "$unit"); do
        mkdir -p "$root/etc/systemd/system/$target.wants"
        ln -sf "${unit#"$root"}" "$root/etc/systemd/system/$target.wants/$1"
    done
    for target in $(valuesOf Also "$unit"); do
        enableUnit "$target"
    done
}

# install FILE TARGET [MODE]: never into a file that the tree shares with the root.
put() {
    rm -f -- "$root/$2"
    install -D -m "${3:-0644}" "$1" "$root/$2"
}

putText() {
    rm -f -- "$root/$1"
    mkdir -p "$root/${1%/*}"
    cat >"$root/$1"
}

makeRoot() {
    local package name target=multi-user.target
    ((${#lean[@]} == 0)) || target=operator-panel-first.target
    rm -rf -- "$root"
    cp -al "$tree" "$root"
    for package in "$@"; do
        dpkg-deb --fsys-tarfile "$package" | tar -x -p --keep-directory-symlink -C "$root"
    done
    for name in agent framewatch touchscreen visualisation; do
        put "build/armhf/emulator/guest/$name" "usr/lib/emulator/$name" 0755
    done
    put emulator/guest/network usr/lib/emulator/network 0755
    for name in emulator/guest/units/*; do
        put "$name" "usr/lib/systemd/system/${name##*/}"
        enableUnit "${name##*/}"
    done
    enableUnit operator-panel.service
    # Each unit that another one names is loaded before the first is started, also where it is masked.
    for name in "${unneededUnits[@]}"; do
        rm -f -- "$root"/usr/lib/systemd/system/{,*.wants/}"$name"
    done
    ln -sf "/usr/lib/systemd/system/$target" "$root/etc/systemd/system/default.target"
    rm -f -- "$root"/usr/lib/tmpfiles.d/*
    echo 'd /tmp/.system 0755 root root -' | putText etc/tmpfiles.d/panel-requests.conf
    # All but what a panel has is left out: it takes the emulated processor seconds.
    putText etc/systemd/system/systemd-udev-trigger.service.d/emulator.conf <<'END'
[Service]
ExecStart=
ExecStart=-udevadm trigger --type=devices --action=add --subsystem-match=input \
    --subsystem-match=graphics --subsystem-match=drm --subsystem-match=block --subsystem-match=misc \
    --subsystem-match=virtio-ports --subsystem-match=net
END
    printf '[Journal]\nStorage=volatile\nRateLimitBurst=0\n' \
        | putText etc/systemd/journald.conf.d/emulator.conf
    # The emulator's tablet is where the touchscreen gets its fingers from, not an input device.
    putText etc/udev/rules.d/60-zz-emulator.rules <<'END'
SUBSYSTEM=="input", ATTRS{name}=="QEMU Virtio Tablet", ENV{ID_INPUT}="", ENV{ID_INPUT_MOUSE}="", \
    ENV{ID_INPUT_TABLET}="", ENV{ID_INPUT_TOUCHSCREEN}="", ENV{ID_INPUT_KEYBOARD}=""
END
    echo panel | putText etc/hostname
    echo 0123456789abcdef0123456789abcdef | putText etc/machine-id
    : | putText etc/fstab
    put "$tree/usr/share/base-passwd/passwd.master" etc/passwd
    put "$tree/usr/share/base-passwd/group.master" etc/group
    ln -sf mawk "$root/usr/bin/awk" # an alternative, which nobody has installed
    mkdir -p "$root/flash/local" "$root/simulator"
}

# rootIsOwner COMMAND...: as root, or where everything looks as if it were root's.
rootIsOwner() {
    if ((EUID == 0)); then "$@"; else fakeroot -- "$@"; fi
}

makeFileSystem() {
    local new=$image/root.$name.new log=$work/$name.log
    rm -f -- "$new"
    truncate -s 512M "$new"
    case $fs in
    ext4)
        rootIsOwner mke2fs -q -t ext4 -L root -m 0 -d "$root" "$new" >"$log" 2>&1
        ;;
    f2fs)
        mkfs.f2fs -q -l root "$new" >"$log" 2>&1 \
            && rootIsOwner sload.f2fs -P -f "$root" "$new" >>"$log" 2>&1
        ;;
    esac || die "making the $fs file system failed: $(tail -n 1 "$log")"
    mv -- "$new" "$image/root.$name"
}

# panelPackages: files of the panel's packages.
panelPackages() {
    local version panel=operator-panel
    version=$(dpkg-parsechangelog --show-field Version)_$architecture
    ((${#lean[@]} == 0)) || panel=lean/operator-panel-lean
    printf 'build/packages/%s.deb\n' "${panel}_$version" "operator-panel-simulator_$version"
}

# checkDependencies PACKAGE...: dies when the tree lacks what one of them depends on.
checkDependencies() {
    local package name
    for package; do
        for name in $(dpkg-deb --field "$package" Depends | sed 's/([^)]*)//g; s/|[^,]*//g; s/,/ /g'); do
            # What apt does not show is a name that others provide.
            grep -q "^$name " "$tree.packages" \
                || [[ -z $(apt-cache show "$name" 2>/dev/null) ]] \
                || die "$(basename "$package") depends on $name, which is not among the tree's packages"
        done
    done
}

mkdir -p "$image"
oneAtATime emulator
makeTree
packaging/build.sh --arch "$architecture"
((${#lean[@]} == 0)) || packaging/build.sh --arch "$architecture" --lean
mapfile -t packages < <(panelPackages)
checkDependencies "${packages[@]}"
configureAndBuild armhf emulator-guest
configureAndBuild debug panelctl
stamp="$(sha256sum "${packages[@]}" build/armhf/emulator/guest/{agent,framewatch,touchscreen,visualisation} \
    emulator/image.sh emulator/guest/network emulator/guest/units/* "$tree.stamp")"
name=${lean:+lean-}$fs
if [[ -e $image/root.$name && $(cat "$image/$name.stamp" 2>/dev/null) == "$stamp" ]]; then
    exit 0
fi
say "Making the emulated device's $name file system"
ownImage
rm -f -- "$image/$name.stamp"
makeRoot "${packages[@]}"
makeFileSystem
rm -rf -- "$root"
printf '%s\n' "$stamp" >"$image/$name.stamp"
