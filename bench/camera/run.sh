#!/usr/bin/env bash
# The camera import's throughput beside its yardsticks, in one run:
#   1. 500 photos of 5 MB from a folder camera (libgphoto2's directory
#      driver): qbpd-imgacq against `gphoto2 --get-all-files`;
#   2. the same photos as a card: the program's verified card copy against
#      `cp -r`;
#   3. with QBPD_BENCH_MOVE=1, also the card moved (every copy read back from
#      the disk before its source goes), against the same `cp -r` runs; each
#      round moves a fresh copy of the card, made outside the timing.
# Each is run three times, alternating, after a first warm-up of the cache;
# the best time of each counts.
#   bench/camera/run.sh BUILD-FOLDER [COUNT] [MB]
set -euo pipefail
build=${1:-build}
count=${2:-500}
mb=${3:-5}
imgacq=$build/app/qbpd-imgacq
bench=$build/bench/camera/card_copy_bench
work=$(mktemp -d "${TMPDIR:-/var/tmp}/qbpd-camera-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data \
  XDG_CACHE_HOME=$work/cache XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
data=$XDG_DATA_HOME/quillbay-picture-desk

camera=$work/camera
mkdir -p "$camera/DCIM/100TEST"
# Each photo is random data of its own: as incompressible as a JPEG's, with
# no zero pages that a copy could skip and no two photos alike.
for i in $(seq 1 "$count"); do
  head -c $((mb * 1024 * 1024)) /dev/urandom > "$camera/DCIM/100TEST/IMG_$(printf %04d "$i").JPG"
done
total_mb=$((count * mb))
echo "photos: $count x $mb MB ($total_mb MB) in $work"

now() { date +%s.%N; }
best() { sort -n | head -n1; }

run_imgacq() {
  local dest=$work/out-imgacq
  rm -rf "$dest" "$data/ImgAcq.dat"
  local t0 t1
  t0=$(now)
  "$imgacq" "Directory Browse (disk:$camera)*$dest*Picture" 2> /dev/null &
  local pid=$!
  # The program's part: take "310" so that the last answer can come (with
  # the shell's own builtins: a process started every 10 ms would take a
  # processor from the transfer that the anchor has to itself).
  # The 10 ms naps are a read that times out on a pipe nobody writes to.
  local line nap
  exec {nap}<> <(:)
  while kill -0 $pid 2> /dev/null; do
    if [[ -f $data/ImgAcq.dat ]] && read -r line < "$data/ImgAcq.dat" &&
       [[ $line == 310* ]]; then
      rm -f "$data/ImgAcq.dat"
    fi
    read -rt 0.01 -u "$nap" line || true
  done
  exec {nap}>&-
  wait $pid
  t1=$(now)
  [[ $(ls "$dest" | wc -l) == "$count" ]] || { echo "imgacq copied $(ls "$dest" | wc -l)"; exit 1; }
  echo "$t1 - $t0" | bc
}

run_gphoto2() {
  local dest=$work/out-gphoto2
  rm -rf "$dest"
  mkdir -p "$dest"
  local t0 t1
  t0=$(now)
  (cd "$dest" && gphoto2 --port "disk:$camera" --camera "Directory Browse" \
     --get-all-files --force-overwrite --quiet > /dev/null)
  sync -f "$dest"
  t1=$(now)
  [[ $(ls "$dest" | wc -l) == "$count" ]] || { echo "gphoto2 copied $(ls "$dest" | wc -l)"; exit 1; }
  echo "$t1 - $t0" | bc
}

run_card() {
  local dest=$work/out-card
  rm -rf "$dest"
  local out
  out=$("$bench" "$camera" "$dest")
  echo "$out" >> "$work/card.log"
  echo "$out" | awk '{print $6}'
}

run_move() {
  local card=$work/card-to-move dest=$work/out-move
  rm -rf "$dest" "$card"
  cp -r "$camera" "$card"
  sync -f "$card"
  local out
  out=$("$bench" "$card" "$dest" move)
  [[ -z $(find "$card" -type f) ]] || { echo "the move left files on the card"; exit 1; }
  echo "$out" | awk '{print $6}'
}

run_cp() {
  local dest=$work/out-cp
  rm -rf "$dest"
  local t0 t1
  t0=$(now)
  cp -r "$camera" "$dest"
  sync -f "$dest"
  t1=$(now)
  echo "$t1 - $t0" | bc
}

echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
# Warm the cache once, so that every contender reads from memory.
cat "$camera"/DCIM/100TEST/* > /dev/null
for round in 1 2 3; do
  run_imgacq >> "$work/imgacq.t"
  run_gphoto2 >> "$work/gphoto2.t"
  run_card >> "$work/card.t"
  run_cp >> "$work/cp.t"
  if [[ ${QBPD_BENCH_MOVE:-0} == 1 ]]; then
    run_move >> "$work/move.t"
  fi
done
i=$(best < "$work/imgacq.t"); g=$(best < "$work/gphoto2.t")
c=$(best < "$work/card.t"); p=$(best < "$work/cp.t")
longest=$(awk '{print $8}' "$work/card.log" | sort -n | tail -n1)
printf 'camera: qbpd-imgacq %.2f s (%.0f MB/s), gphoto2 --get-all-files %.2f s (%.0f MB/s), ratio %.2f\n' \
  "$i" "$(echo "$total_mb / $i" | bc -l)" "$g" "$(echo "$total_mb / $g" | bc -l)" "$(echo "$g / $i" | bc -l)"
printf 'card:   verified copy %.2f s (%.0f MB/s), cp -r + sync %.2f s (%.0f MB/s), ratio %.2f\n' \
  "$c" "$(echo "$total_mb / $c" | bc -l)" "$p" "$(echo "$total_mb / $p" | bc -l)" "$(echo "$p / $c" | bc -l)"
if [[ ${QBPD_BENCH_MOVE:-0} == 1 ]]; then
  m=$(best < "$work/move.t")
  printf 'move:   verified move %.2f s (%.0f MB/s), cp -r + sync %.2f s, ratio %.2f\n' \
    "$m" "$(echo "$total_mb / $m" | bc -l)" "$p" "$(echo "$p / $m" | bc -l)"
fi
echo "card copy: longest wait between two event pumps $longest ms"
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "all times: imgacq $(tr '\n' ' ' < "$work/imgacq.t"); gphoto2 $(tr '\n' ' ' < "$work/gphoto2.t"); card $(tr '\n' ' ' < "$work/card.t"); cp $(tr '\n' ' ' < "$work/cp.t")$([[ -f $work/move.t ]] && echo "; move $(tr '\n' ' ' < "$work/move.t")")"
