#!/bin/bash
# Runs the program's image paths beside their yardsticks in one run and
# prints the ratios (see README.md):
#
#   bench/compare/run.sh [BUILD_FOLDER] [PHOTOS]
#
# BUILD_FOLDER defaults to build; PHOTOS (the folder of the open, 5000 by
# default) is made by grid_bench. Within each program the compared cases
# take turns (random interleaving, or rounds of turns), so that a change in
# the machine's load falls on both sides alike. Build the three programs
# first: ninja -C build thumbnails_bench display_bench grid_bench
set -euo pipefail

build=${1:-build}
photos=${2:-5000}
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

turns=(--benchmark_enable_random_interleaving=true
       --benchmark_format=csv)
repeated=("${turns[@]}" --benchmark_repetitions=3
          --benchmark_report_aggregates_only=true)
thumbnail_cases='ThumbnailsOfTenJpegs/(NoCache|PlainLibvips|TurboEighthDecode)/|TenCameraPhotos/(NoCache|PlainLibvips)/'

echo "load before: $(uptime)"
"$build/bench/thumbnails/thumbnails_bench" "${repeated[@]}" \
  --benchmark_filter="$thumbnail_cases" >"$out/thumbnails12.csv"
"$build/bench/thumbnails/thumbnails_bench" --24mp "${repeated[@]}" \
  --benchmark_filter="$thumbnail_cases" >"$out/thumbnails24.csv"
"$build/bench/display/display_bench" "${turns[@]}" \
  --benchmark_filter='LoadFitRender|VipsThumbnail1600|TurboHalfDecode' \
  >"$out/display.csv"
"$build/bench/grid/grid_bench" --photos "$photos" --compare-open 3 \
  >"$out/grid.txt"
echo "load after: $(uptime)"

# The median wall-clock time of benchmark $2 in the CSV file $1, in ms
# (Google Benchmark adds the run's settings to the name: "$2/min_time:...").
median() {
  awk -F, -v name="\"$2/" \
    'index($1, name) == 1 && $1 ~ /_median"$/ { print $3 }' "$1"
}

ratio() {
  awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'
}

for size in 12 24; do
  file="$out/thumbnails$size.csv"
  program=$(median "$file" ThumbnailsOfTenJpegs/NoCache)
  vips=$(median "$file" ThumbnailsOfTenJpegs/PlainLibvips)
  floor=$(median "$file" ThumbnailsOfTenJpegs/TurboEighthDecode)
  camera=$(median "$file" TenCameraPhotos/NoCache)
  camera_vips=$(median "$file" TenCameraPhotos/PlainLibvips)
  echo
  echo "Ten ${size}-megapixel JPEG thumbnails (medians of 3, ms):"
  echo "  program $program, libvips thumbnail $vips, turbo 1/8 decode $floor"
  echo "  ratio program / libvips: $(ratio "$program" "$vips")"
  echo "  ratio program / turbo 1/8 decode: $(ratio "$program" "$floor")"
  echo "  camera photos with previews: program $camera, libvips $camera_vips"
  echo "  ratio libvips / program (camera photos): $(ratio "$camera_vips" "$camera")"
done

fit=$(median "$out/display.csv" Show24MP/Model/LoadFitRender)
vips_fit=$(median "$out/display.csv" Show24MP/VipsThumbnail1600)
half=$(median "$out/display.csv" Show24MP/TurboHalfDecode)
echo
echo "A 24-megapixel photo fitted to a 1600-pixel view (medians of 9, ms):"
echo "  program $fit, libvips thumbnail to the width $vips_fit, turbo 1/2 decode $half"
echo "  ratio program / libvips: $(ratio "$fit" "$vips_fit")"
echo "  ratio program / turbo 1/2 decode: $(ratio "$fit" "$half")"

echo
echo "A folder of $photos photos opened (see grid_bench):"
grep -E '^(open|ratio|  round)' "$out/grid.txt"
