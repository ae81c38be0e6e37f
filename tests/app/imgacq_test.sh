#!/usr/bin/env bash
# Runs qbpd-imgacq as the program does, on folder cameras (libgphoto2's
# directory-browsing driver, port "disk:" + folder), and checks its answers
# and the photos it leaves.
#   imgacq_test.sh PATH-TO-qbpd-imgacq PATH-TO-qbpd-reg
set -uo pipefail
imgacq=$1
reg=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data \
  XDG_CACHE_HOME=$work/cache XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
data=$XDG_DATA_HOME/quillbay-picture-desk
answer=$data/ImgAcq.dat
key='Software\Quillbay Picture Desk\Preferences\CameraTransfer'
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# A camera of 200 photos in two folders, each with its own bytes.
camera=$work/camera
mkdir -p "$camera/DCIM/100TEST" "$camera/DCIM/101TEST"
for i in $(seq 1 200); do
  folder=100TEST
  ((i > 120)) && folder=101TEST
  head -c $((20000 + i * 37)) /dev/urandom > "$camera/DCIM/$folder/IMG_$(printf %04d "$i").JPG"
done
(cd "$camera" && find . -type f -exec sha256sum {} + | awk '{print $1}' | sort) > "$work/camera.sums"

# The program takes "310" after its first wait; here a reader that deletes
# it as soon as it appears, and keeps every line it saw.
read_answers() {
  : > "$work/answers"
  while kill -0 "$1" 2>/dev/null; do
    if [[ -f $answer ]]; then
      line=$(head -n1 "$answer")
      if [[ $line == 310* ]]; then
        echo "$line" >> "$work/answers"
        rm -f "$answer"
      fi
    fi
    sleep 0.05
  done
  [[ -f $answer ]] && head -n1 "$answer" >> "$work/answers"
  rm -f "$answer"
}

# 1. Copy: every photo arrives, named Picture n with its extension; the camera
#    keeps its photos.
"$reg" set "$key" DeleteImagesStatus False
dest=$work/Imports/01-15-2026
"$imgacq" "Directory Browse (disk:$camera)*$dest*Picture" 2> "$work/err" &
pid=$!
read_answers $pid
wait $pid || fail "copy run exit status $?: $(cat "$work/err")"
[[ $(sed -n 1p "$work/answers") == "310 " ]] || fail "no 310: $(cat "$work/answers")"
[[ $(sed -n 2p "$work/answers") == "300 $dest|" ]] || fail "no 300: $(cat "$work/answers")"
[[ $(ls "$dest" | wc -l) == 200 ]] || fail "$(ls "$dest" | wc -l) photos arrived"
[[ -f "$dest/Picture 1.JPG" && -f "$dest/Picture 200.JPG" ]] || fail "names: $(ls "$dest" | head -3)"
(cd "$dest" && sha256sum -- * | awk '{print $1}' | sort) > "$work/dest.sums"
cmp -s "$work/camera.sums" "$work/dest.sums" || fail "copies differ from the camera's photos"
[[ $(find "$camera" -type f | wc -l) == 200 ]] || fail "the copy run deleted photos"
ls -A "$dest" | grep -q '^\.' && fail "temporary files left in $dest"

# 2. Move: the camera is emptied, every photo once in the new folder.
"$reg" set "$key" DeleteImagesStatus True
dest2=$work/Imports/01-15-2026_001
"$imgacq" "Directory Browse (disk:$camera)*$dest2*Trip" 2> "$work/err" &
pid=$!
read_answers $pid
wait $pid || fail "move run exit status $?: $(cat "$work/err")"
[[ $(sed -n 2p "$work/answers") == "300 $dest2|" ]] || fail "move: $(cat "$work/answers")"
[[ $(find "$camera" -type f | wc -l) == 0 ]] || fail "$(find "$camera" -type f | wc -l) photos left on the camera"
(cd "$dest2" && sha256sum -- * | awk '{print $1}' | sort) > "$work/dest2.sums"
cmp -s "$work/camera.sums" "$work/dest2.sums" || fail "moved photos differ"
[[ -f "$dest2/Trip 1.JPG" ]] || fail "base name: $(ls "$dest2" | head -2)"

# 3. An empty camera: "410" at once, no folder.
"$imgacq" "Directory Browse (disk:$camera)*$work/Imports/empty*Picture" 2> "$work/err"
[[ $(head -n1 "$answer") == "410 " ]] || fail "empty camera: $(cat "$answer")"
[[ -e $work/Imports/empty ]] && fail "an empty camera made a folder"
rm -f "$answer"

# 4. No such camera, and a bad command line: "400".
"$imgacq" "Directory Browse (disk:$work/nowhere)*$work/Imports/x*Picture" 2> /dev/null
[[ $(head -n1 "$answer") == "400 " ]] || fail "missing camera: $(cat "$answer")"
rm -f "$answer"
"$imgacq" "only-a-device" 2> /dev/null
[[ $(head -n1 "$answer") == "400 " ]] || fail "bad command line: $(cat "$answer")"
rm -f "$answer"

# 5. The camera pulled out mid-transfer (its folder moved away partway; more
#    photos than the helper fetches ahead of its saves):
#    "400", and every photo is either still on the camera or whole at the
#    destination; none is deleted without its copy.
mkdir -p "$camera/DCIM/100TEST"
for i in $(seq 1 200); do
  head -c 300000 /dev/urandom > "$camera/DCIM/100TEST/IMG_$(printf %04d "$i").JPG"
done
(cd "$camera" && find . -type f -exec sha256sum {} + | awk '{print $1}' | sort) > "$work/camera3.sums"
cp -r "$camera" "$work/camera3.copy"
dest3=$work/Imports/pulled
"$imgacq" "Directory Browse (disk:$camera)*$dest3*Picture" 2> "$work/err" &
pid=$!
: > "$work/answers"
pulled=0
while kill -0 $pid 2>/dev/null; do
  if [[ -f $answer && $(head -n1 "$answer") == 310* ]]; then
    rm -f "$answer"
  fi
  if ((pulled == 0)) && [[ -d $dest3 ]] && (($(ls "$dest3" | wc -l) >= 5)); then
    mv "$camera/DCIM" "$work/pulled-out"
    pulled=1
  fi
  sleep 0.01
done
wait $pid
final=$(head -n1 "$answer" 2> /dev/null)
rm -f "$answer"
if ((pulled == 1)); then
  [[ $final == "400 " ]] || fail "pulled camera answered '$final'"
  # Every photo is on the (pulled) camera or whole at the destination.
  (cd "$work/pulled-out" && find . -type f -exec sha256sum {} + | awk '{print $1}'
   cd "$dest3" && find . -type f -exec sha256sum {} + | awk '{print $1}') | sort -u > "$work/after.sums"
  comm -23 "$work/camera3.sums" "$work/after.sums" | grep -q . && fail "a photo was lost"
  ls -A "$dest3" | grep -q '^\.' && fail "a half-written photo was left"
else
  echo "note: the transfer ended before the camera could be pulled"
fi

((failures == 0)) && echo "imgacq: all checks passed"
exit $((failures > 0))
