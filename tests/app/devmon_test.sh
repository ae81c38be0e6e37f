#!/usr/bin/env bash
# Runs qbpd-devmon as a real process: a medium mounted under /media (a loop
# mount of a small file system) is reported in DevMon.dat by its drive
# token, the program is started with "DEVMON" (a stand-in program here), an
# idle monitor uses no processor, DetectUSBDevices "False" silences it, and
# SIGTERM ends it. Needs root for the mount; skipped (77) otherwise.
#   devmon_test.sh PATH-TO-qbpd-devmon PATH-TO-qbpd-reg
set -uo pipefail
devmon=$1
reg=$2
if ((EUID != 0)) || ! command -v mkfs.ext4 > /dev/null; then
  echo "skipped: mounting needs root and mkfs.ext4"
  exit 77
fi
work=$(mktemp -d)
media=/media/qbpd-devmon-test-$$
cleanup() {
  [[ -n ${pid:-} ]] && kill -TERM "$pid" 2> /dev/null
  mountpoint -q "$media/CARD" && umount "$media/CARD"
  rm -rf "$media" "$work"
}
trap cleanup EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data \
  XDG_CACHE_HOME=$work/cache XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" "$work/bin" "$media/CARD"
chmod 700 "$XDG_RUNTIME_DIR"
data=$XDG_DATA_HOME/quillbay-picture-desk
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# The monitor starts the program beside it: a stand-in that notes its
# command line.
cp "$devmon" "$work/bin/qbpd-devmon"
printf '#!/bin/sh\necho "$@" >> "%s/started"\n' "$work" > "$work/bin/qbpd"
chmod +x "$work/bin/qbpd"
truncate -s 8M "$work/card.img"
mkfs.ext4 -q "$work/card.img"

"$work/bin/qbpd-devmon" 2> "$work/log" &
pid=$!
sleep 1
if ! mount -o loop "$work/card.img" "$media/CARD" 2> "$work/mount.err"; then
  echo "skipped: no loop mount here ($(cat "$work/mount.err"))"
  exit 77
fi
for _ in $(seq 1 50); do
  [[ -f $data/DevMon.dat && -f $work/started ]] && break
  sleep 0.1
done
[[ $(cat "$data/DevMon.dat" 2> /dev/null) == "100 D:|" ]] || fail "DevMon.dat: $(cat "$data/DevMon.dat" 2>&1)"
[[ $(cat "$data/Drives.dat" 2> /dev/null) == "D:	$media/CARD" ]] || fail "Drives.dat: $(cat "$data/Drives.dat" 2>&1)"
[[ $(cat "$work/started" 2> /dev/null) == "DEVMON" ]] || fail "the program was not started with DEVMON"

# Idle: asleep in poll, no processor time used over two seconds.
before=$(awk '{print $14 + $15}' "/proc/$pid/stat")
sleep 2
after=$(awk '{print $14 + $15}' "/proc/$pid/stat")
((after - before <= 1)) || fail "idle monitor used $((after - before)) ticks"
[[ $(awk '{print $3}' "/proc/$pid/stat") == S ]] || fail "the monitor is not asleep"

# DetectUSBDevices "False": a medium mounted again writes nothing.
rm -f "$data/DevMon.dat"
umount "$media/CARD"
"$reg" set 'Software\Quillbay Picture Desk\Preferences\CameraTransfer' DetectUSBDevices False
mount -o loop "$work/card.img" "$media/CARD"
sleep 1
[[ -f $data/DevMon.dat ]] && fail "DetectUSBDevices False still reported: $(cat "$data/DevMon.dat")"

kill -TERM "$pid"
for _ in $(seq 1 20); do
  kill -0 "$pid" 2> /dev/null || break
  sleep 0.1
done
kill -0 "$pid" 2> /dev/null && fail "SIGTERM did not end the monitor"
pid=

((failures == 0)) && echo "devmon: all checks passed"
exit $((failures > 0))
