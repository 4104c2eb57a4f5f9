#!/bin/sh
# shellcheck disable=SC2016,SC2317 # commands are handed to "can"; other shells expand what is theirs
# Run by root on a device (or an emulated one) with systemd and the package installed: what can
# syscfg, mount and reboot do when operator-panel.service has started them, and what from a root
# shell? The same, but for what the unit denies on purpose. Starts a copy of the unit that has this
# script in the panel's place; the panel goes on. Exit code 1 where there is a difference that is
# not wanted, or none where one is.
#
# compare-rights.sh          compares
# compare-rights.sh probe    prints what can be done from here, "NAME yes|no|VALUE" a line

work=/run/compare-rights
unit=operator-panel-rights.service

# What of the list has to fail in the unit. Everything else has to be as in the shell.
denied="set-clock host-name make-node s-bit other-user real-time raw-socket namespace chroot-call core-limit"

# can NAME COMMAND...
can() {
    name=$1
    shift
    if ("$@") >/dev/null 2>&1; then echo "$name yes"; else echo "$name no"; fi
}

writes() {
    echo text >"$1/.compare-rights" && rm "$1/.compare-rights"
}

# Whether the mount is seen by everyone is looked at by the comparing side.
remounts() {
    mount -o remount,ro "$work/mount"
}

chowns() {
    touch "$work/file" && chown 65534:65534 "$work/file" && chmod 600 "$work/file" \
        && echo text >>"$work/file"
}

setsAddress() {
    busybox ip address add 127.8.9.1/32 dev lo && busybox ip address del 127.8.9.1/32 dev lo
}

opensDisk() {
    disk=$(sed -n 's,^\(/dev/[^ ]*\) / .*,\1,p' /proc/mounts)
    disk=${disk:-$(find /dev -maxdepth 1 -type b | head -n 1)}
    dd if=/dev/null of="$disk" conv=notrunc
}

makesNode() {
    rm -f "$work/node"
    mknod "$work/node" c 1 3
}

probe() {
    for kind in mnt net pid ipc; do
        echo "namespace-$kind $(readlink "/proc/self/ns/$kind")"
    done
    can request-seen test -e "/tmp/rights-request.$(cat "$work/number")"
    for folder in / /etc /usr /var /tmp /run /root /dev/shm; do
        can "write-$folder" writes "$folder"
    done
    can remount remounts
    can change-owner chowns
    can read-others cat "$work/others"
    can kernel-setting sh -c 'value=$(cat /proc/sys/net/ipv4/ip_forward) && echo "$value" >/proc/sys/net/ipv4/ip_forward'
    can set-address setsAddress
    can open-disk opensDisk
    can kill-others kill -0 "$(cat "$work/pid")"
    can start-job systemctl --no-block start basic.target
    echo "capability-boot $((0x$(sed -n 's/^CapEff:[^0-9a-f]*//p' /proc/self/status) >> 22 & 1))"
    echo "capability-admin $((0x$(sed -n 's/^CapEff:[^0-9a-f]*//p' /proc/self/status) >> 21 & 1))"
    echo "umask $(umask)"
    awk 'FNR > 1 && !/core file/ {
        name = substr($0, 5, 22); gsub(/ +$/, "", name); gsub(/ /, "-", name)
        print "limit-" name, substr($0, 27, 42)
    }' /proc/self/limits

    can set-clock date -s "@$(date +%s)"
    can host-name sh -c 'name=$(cat /proc/sys/kernel/hostname) && busybox hostname "$name"'
    can make-node makesNode
    can s-bit sh -c "touch '$work/bit' && chmod u+s '$work/bit'"
    can other-user setpriv --reuid 65534 --regid 65534 --clear-groups true
    can real-time chrt -f 1 true
    can raw-socket busybox arping -c 1 -w 1 -I lo 127.0.0.1
    can namespace unshare --mount true
    can chroot-call chroot / true
    can core-limit sh -c 'test "$(ulimit -c)" != 0 || ulimit -c 1'
}

# The unit with this script as its program: whatever it says of rights is kept.
makeUnit() {
    systemctl cat operator-panel.service | sed -E '/^\[Install\]/,/^\[/d
        /^(Type|NotifyAccess|ExecStart|Restart|RestartSec|RestartPreventExitStatus|WatchdogSec|TimeoutStartSec|OnFailure|RuntimeDirectory.*|StartLimit.*|Standard.*|After)=/d'
    printf '[Service]\nType=oneshot\nExecStart=/bin/sh %s probe\nStandardOutput=truncate:%s\n' \
        "$1" "$work/unit"
}

cleanUp() {
    kill "$other" 2>/dev/null
    umount "$work/mount" 2>/dev/null
    rm -rf "$work" /tmp/rights-request.* "/run/systemd/system/$unit"
    systemctl daemon-reload
}

compare() {
    awk -v denied="$denied" '
        BEGIN { for (i = split(denied, list, " "); i > 0; --i) wanted[list[i]] = 1 }
        FNR == NR { shell[$1] = substr($0, length($1) + 2); next }
        {
            unit = substr($0, length($1) + 2); ++compared; seen[$1] = 1
            if ($1 in wanted) bad = unit != "no"; else bad = unit != shell[$1]
            if (bad) { ++different; print "DIFFERENT " $1 ": unit " unit ", root shell " shell[$1] }
        }
        END {
            for (name in shell) if (!(name in seen)) { ++different; print "MISSING " name }
            printf "%d compared, %d not as they should be\n", compared, different
            exit different > 0 || compared < 20
        }' "$work/shell" "$work/unit"
}

case ${1:-} in
probe) probe; exit 0 ;;
'') ;;
*) echo "compare-rights.sh: unknown argument '$1'" >&2; exit 2 ;;
esac

if [ "$(id -u)" != 0 ] || [ ! -d /run/systemd/system ]; then
    echo "compare-rights.sh: needs root and systemd" >&2
    exit 1
fi
mkdir -p "$work/mount"
cp "$0" "$work/probe" # wherever it lies, the unit may not see it there
mount -t tmpfs none "$work/mount"
setpriv --reuid 65534 --regid 65534 --clear-groups sleep 600 &
other=$!
trap cleanUp EXIT
trap 'exit 1' INT TERM
echo "$other" >"$work/pid"
echo "$$" >"$work/number"
: >"/tmp/rights-request.$$"
echo text >"$work/others"
chown 65534:65534 "$work/others"
chmod 600 "$work/others"

probe >"$work/shell"
mount -o remount,rw "$work/mount"
makeUnit "$work/probe" >"/run/systemd/system/$unit"
systemctl daemon-reload
systemctl start "$unit" || { systemctl status --no-pager "$unit"; exit 1; }
status=0
compare || status=1
grep -q " $work/mount tmpfs ro" /proc/1/mounts \
    || { echo "DIFFERENT remount: what the unit mounts anew, nobody else sees"; status=1; }
exit "$status"
