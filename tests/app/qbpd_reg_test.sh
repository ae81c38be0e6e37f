#!/usr/bin/env bash
# Drives qbpd-reg as a user would, on a private home, and checks its output,
# its exit status and the database file it leaves.
#   qbpd_reg_test.sh PATH-TO-qbpd-reg
set -uo pipefail
reg=$1
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data
export XDG_CACHE_HOME=$home/cache
db=$XDG_CONFIG_HOME/quillbay-picture-desk/settings.db
root='Software\Quillbay Picture Desk'
failures=0

# expect STATUS EXPECTED-STDOUT COMMAND...
expect() {
  local status=$1 want=$2
  shift 2
  local got rc
  got=$("$@" 2>"$home/stderr")
  rc=$?
  if [[ $rc != "$status" || $got != "$want" ]]; then
    echo "FAIL: $*"
    echo "  status $rc (wanted $status), output:"
    printf '%s\n' "$got" | sed 's/^/    /'
    echo "  wanted:"
    printf '%s\n' "$want" | sed 's/^/    /'
    sed 's/^/  stderr: /' "$home/stderr"
    failures=$((failures + 1))
  fi
}

# Reading a settings tree that doesn't exist finds nothing and makes nothing.
expect 1 "" "$reg" get "$root" Version
expect 0 "" "$reg" list
[[ -e $db ]] && { echo "FAIL: a read made $db"; failures=$((failures + 1)); }

expect 0 "" "$reg" set "$root\\Preferences\\Display" ZoomSettings OriginalSize
expect 0 "" "$reg" set "$root\\Preferences\\Display" RecentFolder1 "/home/u/My Photos"
expect 0 "OriginalSize" "$reg" get "SOFTWARE\\quillbay picture desk\\Preferences\\Display" zoomsettings
expect 0 "ZoomSettings=OriginalSize
RecentFolder1=/home/u/My Photos" "$reg" list "$root\\Preferences\\Display"
mode=$(stat -c %a "$db")
[[ $mode == 600 ]] || { echo "FAIL: $db has mode $mode"; failures=$((failures + 1)); }

# The default set fills in what is missing and keeps the user's values.
out=$("$reg" defaults)
[[ $? == 0 && $out == "laid "*" values from "*default-settings.ini ]] ||
  { echo "FAIL: defaults said: $out"; failures=$((failures + 1)); }
expect 0 "OriginalSize" "$reg" get "$root\\Preferences\\Display" ZoomSettings
expect 0 "$home/Pictures" "$reg" get "$root\\Preferences\\Settings" DefaultFolder
expect 0 "" "$reg" get "$root\\Preferences\\Display" ExplorerCloseIntervalInSeconds
out=$("$reg" defaults)
[[ $out == "laid 0 values from "* ]] ||
  { echo "FAIL: second defaults said: $out"; failures=$((failures + 1)); }
expect 2 "laid 0 values from $home/none.ini" "$reg" defaults "$home/none.ini"
expect 0 "$root
$root\\Preferences\\CameraTransfer
$root\\Preferences\\Display
$root\\Preferences\\ExpressPrints
$root\\Preferences\\Settings
$root\\SiteSettings" "$reg" list

expect 0 "" "$reg" delete "$root\\Preferences\\Display" recentfolder1
expect 1 "" "$reg" delete "$root\\Preferences\\Display" RecentFolder1
expect 1 "" "$reg" list "$root\\Nothing"

# A separate database, and one that is not a database at all.
expect 0 "" "$reg" --db "$home/other.db" set K N "a value"
expect 0 "a value" "$reg" --db "$home/other.db" get k n
printf 'not a database %.0s' {1..100} >"$home/broken.db"
expect 1 "" "$reg" --db "$home/broken.db" get K N
expect 2 "" "$reg" --db "$home/broken.db" set K N V

# Usage mistakes.
expect 2 "" "$reg"
expect 2 "" "$reg" --db
expect 2 "" "$reg" frobnicate
expect 2 "" "$reg" get OnlyKey
expect 2 "" "$reg" set K N

if ((failures > 0)); then
  echo "$failures check(s) failed"
  exit 1
fi
echo "qbpd-reg: all checks passed"
