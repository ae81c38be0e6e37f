#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks the layout: the programs
# in bin, the resources where the installed programs look for them, the
# desktop entry and the icons where the desktop looks for them.
# usage: install_test.sh BUILD_DIR [VERSION]
# With VERSION, the installed desktop program also runs on a fresh home
# (tests/app/first_run_test.sh).
set -euo pipefail
build=$1
version=${2:-}
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

fail() {
  echo "install_test: $*" >&2
  exit 1
}

cmake --install "$build" --prefix "$prefix" >/dev/null

share=$prefix/share/quillbay-picture-desk/resources
for program in qbpd-reg qbpd-script qbpd-service; do
  [[ -x $prefix/bin/$program ]] || fail "bin/$program is not installed"
done
for file in pictures/button/26N.png pictures/button/26N@2x.png \
            pictures/button/26N.svg pictures/button/G10.png \
            default-settings.ini help/index.html; do
  [[ -f $share/$file ]] || fail "resources/$file is not installed"
done
for file in pictures/README.md pictures/contact-sheet.png \
            quillbay-picture-desk.desktop icons; do
  [[ ! -e $share/$file ]] || fail "resources/$file is installed for nobody"
done

desktop=$prefix/share/applications/quillbay-picture-desk.desktop
[[ -f $desktop ]] || fail "the desktop entry is not installed"
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$desktop" || fail "the desktop entry does not validate"
fi
for size in 16 32 48 64 128 256; do
  icon=$prefix/share/icons/hicolor/${size}x${size}/apps/quillbay-picture-desk.png
  [[ -f $icon ]] || fail "the ${size}x${size} icon is not installed"
done
[[ -f $prefix/share/icons/hicolor/scalable/apps/quillbay-picture-desk.svg ]] ||
  fail "the scalable icon is not installed"

# The device monitor's autostart entry: under a private prefix in its
# etc/xdg/autostart; under /usr/local (here inside DESTDIR) in /etc/xdg/autostart,
# where desktop sessions look; its Exec names the installed monitor each time.
check_autostart() {
  local entry=$1 monitor=$2
  [[ -f $entry ]] || fail "the autostart entry is not at $entry"
  grep -qx "Exec=\"$monitor\"" "$entry" ||
    fail "$entry does not start $monitor: $(grep ^Exec= "$entry")"
  if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$entry" || fail "$entry does not validate"
  fi
}
if [[ -x $prefix/bin/qbpd-devmon ]]; then
  check_autostart "$prefix/etc/xdg/autostart/qbpd-devmon.desktop" \
    "$prefix/bin/qbpd-devmon"
  root=$prefix/destdir
  DESTDIR=$root cmake --install "$build" --prefix /usr/local >/dev/null
  [[ -x $root/usr/local/bin/qbpd-devmon ]] ||
    fail "DESTDIR: bin/qbpd-devmon is not installed"
  check_autostart "$root/etc/xdg/autostart/qbpd-devmon.desktop" \
    /usr/local/bin/qbpd-devmon
  [[ ! -e $root/usr/local/etc ]] ||
    fail "DESTDIR: something went to /usr/local/etc, which sessions don't read"
  rm -rf "$root"
fi

# The installed program must find the installed resources, not the source
# tree it was built from. qbpd-reg names the defaults file it reads.
run_reg() {
  HOME=$prefix/home XDG_CONFIG_HOME=$prefix/home/config \
    XDG_DATA_HOME=$prefix/home/data XDG_CACHE_HOME=$prefix/home/cache \
    "$prefix/bin/qbpd-reg" --db "$prefix/home/settings.db" defaults
}
mkdir -p "$prefix/home"
out=$(run_reg) || fail "installed qbpd-reg failed: $out"
[[ $out == *"from $share/default-settings.ini"* ]] ||
  fail "installed qbpd-reg did not read the installed resources: $out"

# The installed desktop program needs no setting up either: on a fresh home
# it lays the installed defaults, opens Pictures, later the last folder.
if [[ -n $version && -x $prefix/bin/qbpd ]]; then
  bash "$(dirname "$0")/../app/first_run_test.sh" "$prefix/bin/qbpd" \
    "$prefix/bin/qbpd-reg" "$version" ||
    fail "the installed program's first run went wrong"
fi

# And the check above can fail: without the installed share folder the
# program reads something else.
mv "$prefix/share/quillbay-picture-desk" "$prefix/share/moved-away"
out=$(run_reg 2>&1) || true
[[ $out != *"from $share/"* ]] ||
  fail "qbpd-reg reports the installed resources after they were moved"

echo "install_test: layout and resource lookup are right under $prefix"
