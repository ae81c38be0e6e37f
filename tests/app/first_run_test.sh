#!/usr/bin/env bash
# Starts the real desktop program as a new user would: an empty home, no
# settings database and no qbpd-reg, under Qt's offscreen platform. Checks
# what a person sees through what the program leaves behind:
#   1. the first start lays the default settings (the version the About box
#      shows, the thumbnail cache on) and opens the Pictures folder;
#   2. a start with a photo opens that photo's folder;
#   3. a later plain start reopens the folder opened last, not Pictures;
# and that a start runs no reference service (only an online command does).
# usage: first_run_test.sh QBPD QBPD-REG VERSION
set -uo pipefail
qbpd=$1
reg=$2
version=$3
home=$(mktemp -d)
running=""
cleanup() {
  if [[ -n $running ]]; then
    kill "$running" 2>/dev/null
    wait "$running" 2>/dev/null
  fi
  rm -rf "$home"
}
trap cleanup EXIT

unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME
export HOME=$home
export XDG_RUNTIME_DIR=$home/run
mkdir -m 700 "$XDG_RUNTIME_DIR"
export QT_QPA_PLATFORM=offscreen
pictures=$home/Pictures
trip=$pictures/Trip
cache=$home/.cache/quillbay-picture-desk
root='Software\Quillbay Picture Desk'
display="$root\\Preferences\\Display"
failures=0

fail() {
  echo "FAIL: $*"
  failures=$((failures + 1))
}

photo() {
  vips black "$1" 320 240 --bands 3 || {
    echo "first_run_test: the vips command could not make $1"
    exit 1
  }
}

mkdir -p "$trip"
photo "$pictures/a1.jpg"
photo "$pictures/a2.jpg"
photo "$pictures/a3.jpg"
photo "$trip/b1.jpg"
photo "$trip/b2.jpg"

get() { "$reg" get "$1" "$2" 2>/dev/null; }
thumbnails() { find "$cache" -name '*.qpd' 2>/dev/null | wc -l; }

# start [ARG]: runs the program in the background.
start() {
  "$qbpd" "$@" >"$home/qbpd.log" 2>&1 &
  running=$!
}

# stop: ends the program the way a killed desktop session would; what it
# wrote to its settings stays.
stop() {
  kill "$running" 2>/dev/null
  wait "$running" 2>/dev/null
  running=""
}

# wait_for DESCRIPTION COMMAND...: until the command succeeds, or the
# program has ended, or a minute has passed (a bound, not a measurement).
wait_for() {
  local what=$1
  shift
  for _ in $(seq 300); do
    "$@" && return 0
    if ! kill -0 "$running" 2>/dev/null; then
      fail "the program ended before $what"
      sed 's/^/  qbpd: /' "$home/qbpd.log"
      return 1
    fi
    sleep 0.2
  done
  fail "no $what within a minute"
  return 1
}

no_service() {
  [[ ! -e $home/.local/share/quillbay-picture-desk/service ]] ||
    fail "the reference service was started with the program ($1)"
}
thumbnails_are() { [[ $(thumbnails) == "$1" ]]; }
recent_is() { [[ $(get "$display" RecentFolder1) == "$1" ]]; }

# 1. The first start: Pictures opens. Its three photos get thumbnails in the
# persistent cache (the cache is on), Trip's two don't, and the program's own
# recent-folder list (RecentFolder2 and on, free places "") is written.
start
wait_for "Pictures opened" thumbnails_are 3
wait_for "recent folders written" \
  eval '[[ $("$reg" list "$display" | grep -c "^RecentFolder") == 5 ]]'
[[ $(get "$display" RecentFolder1) == "$pictures" ]] ||
  fail "RecentFolder1 is '$(get "$display" RecentFolder1)', not Pictures"
[[ $(get "$root" Version) == "$version" ]] ||
  fail "Version (what the About box shows) is '$(get "$root" Version)'"
[[ $(get "$root" CacheEnable) == *TRUE* ]] || fail "the cache is off"
port=$((8931 + $(id -u) % 50000))
[[ $(get "$root" IP) == "http://127.0.0.1:$port" ]] ||
  fail "IP is '$(get "$root" IP)', not this user's port $port"
[[ $(get "$root\\Preferences\\Settings" LastOpenFolderInPreviousSession) == True ]] ||
  fail "the start does not reopen the last folder"
no_service "first start"
stop

# 2. A start with a photo of Trip opens Trip, which becomes the newest recent
# folder.
start "$trip/b1.jpg"
wait_for "Trip opened" thumbnails_are 5
wait_for "Trip remembered" recent_is "$trip"
[[ $(get "$display" RecentFolder2) == "$pictures" ]] ||
  fail "Pictures is not the second recent folder"
stop

# 3. A plain start reopens Trip: a photo that arrived there since gets its
# thumbnail; Pictures would give none.
photo "$trip/b3.jpg"
start
wait_for "Trip reopened" thumbnails_are 6
recent_is "$trip" || fail "RecentFolder1 is '$(get "$display" RecentFolder1)'"
no_service "later start"
stop

# Every start lays what is missing, and only that: a value the user changed
# stays.
"$reg" set "$root" CacheEnable FALSE
"$reg" delete "$root" Version
start
wait_for "Version laid again" eval '[[ $(get "$root" Version) == "$version" ]]'
stop
[[ $(get "$root" CacheEnable) == FALSE ]] ||
  fail "a start replaced the user's CacheEnable"

if ((failures > 0)); then
  echo "first_run_test: $failures failure(s)"
  exit 1
fi
echo "first_run_test: a fresh home opens Pictures, then the last folder"
