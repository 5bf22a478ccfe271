#!/usr/bin/env bash
# Builds the Debian package from the build folder, unpacks it into a fresh
# root and tests the installed program there with the build folder moved
# away: --version, the self-test, a headless script with pictures, the manual
# page (every option of --help in it), the desktop entries, the package's
# dependencies and lintian (no errors).
#
#   scripts/test-package.sh [build-folder]      (default: build)
#
# KIB_PACKAGE_INSTALL=system installs the package into this machine with
# apt-get instead (for CI on a fresh machine) and tests /usr/bin/kibbar.
set -euo pipefail
cd "$(dirname "$0")/.."
source_dir=$PWD
build=${1:-build}
build=$(cd "$build" && pwd)

fail() { echo "test-package: $*" >&2; exit 1; }
step() { echo "== $*"; }

step "package"
rm -f "$build"/kibbar_*.deb
(cd "$build" && cpack -G DEB > cpack.log 2>&1) || { cat "$build/cpack.log" >&2; fail "cpack failed"; }
deb=$(ls "$build"/kibbar_*_"$(dpkg --print-architecture)".deb 2>/dev/null | head -n 1)
[ -n "$deb" ] || fail "no kibbar_<version>_<arch>.deb in $build"
echo "$deb"

work=$(mktemp -d /tmp/kibbar-package.XXXXXX)
moved=""
cleanup() {
  # Put the build folder back whatever happened.
  if [ -n "$moved" ] && [ -d "$moved" ]; then mv "$moved" "$build"; fi
  rm -rf "$work"
}
trap cleanup EXIT
cp "$deb" "$work/"
deb="$work/$(basename "$deb")"

step "dependencies"
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
for library in libcairo2 libpango-1.0-0 libpangocairo-1.0-0 libpoppler-glib8 libgdk-pixbuf-2.0-0 libicu72 libstdc++6 fonts-dejavu-core; do
  grep -q "\b$library\b" <<< "$depends" || fail "the package does not depend on $library"
done
apt-get install -s -o DPkg::Lock::Timeout=600 "$deb" > "$work/apt-simulate.log" 2>&1 \
  || { cat "$work/apt-simulate.log" >&2; fail "apt-get cannot install the package"; }

step "lintian"
lintian --tag-display-limit 0 "$deb" > "$work/lintian.log" 2>&1 || true
cat "$work/lintian.log"
if grep -q '^E: ' "$work/lintian.log"; then fail "lintian reports errors"; fi

step "install"
if [ "${KIB_PACKAGE_INSTALL:-}" = system ]; then
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq -o DPkg::Lock::Timeout=600 "$deb" > /dev/null
  root=""
else
  root="$work/root"
  dpkg -x "$deb" "$root"
fi
kibbar="$root/usr/bin/kibbar"
[ -x "$kibbar" ] || fail "no $kibbar"
for file in "$root/etc/xdg/autostart/kibbar.desktop" "$root/usr/share/applications/kibbar.desktop" \
            "$root/usr/share/man/man1/kibbar.1.gz" "$root/usr/share/kibbar/examples/default-scenario.json" \
            "$root/usr/share/doc/kibbar/copyright"; do
  [ -f "$file" ] || fail "the package lacks $file"
done
bundle=$(find "$root/usr/lib" -path '*/kibbar/bundles/Parlo.menuextra/Info.json' | head -n 1)
[ -n "$bundle" ] || fail "the package lacks the extra's bundle"

step "the installed program, without the build folder"
moved="$build.moved-away.$$"
mv "$build" "$moved"
# Each run with a home of its own: the self-test leaves a chosen service in the preferences.
runs=0
run() {
  runs=$((runs + 1))
  local home="$work/home-$runs"
  mkdir -p "$home"
  env -i PATH=/usr/bin:/bin HOME="$home" XDG_CONFIG_HOME="$home/.config" LANG=C.UTF-8 "$@"
}
version=$(run "$kibbar" --version) || fail "--version failed"
[ "$version" = "kibbar $(dpkg-deb -f "$deb" Version)" ] || fail "--version says \"$version\""
echo "$version"
if ldd "$kibbar" | grep -q "$moved\|$build"; then fail "the program still loads libraries from the build folder"; fi
platform=$(ldd "$kibbar" | awk '/libkibplatform/ {print $3}')
case "$(realpath -m "$platform")" in
  "$(realpath -m "$root/usr/lib")"/*) ;;
  *) fail "libkibplatform is not the package's (${platform:-not found})" ;;
esac
run "$kibbar" --self-test 0 > "$work/self-test.log" 2> "$work/self-test.err" \
  || { cat "$work/self-test.err" >&2; fail "--self-test 0 failed"; }
grep -q . "$work/self-test.log" || fail "--self-test 0 printed no test log"
examples="$root/usr/share/kibbar/examples"
run "$kibbar" --script "$examples/away-and-back.kbs" --no-queries --pictures "$work/pictures" \
  > "$work/transcript.jsonl" 2> "$work/script.err" || { cat "$work/script.err" >&2; fail "the headless script failed"; }
grep -q '"type":"menu"' "$work/transcript.jsonl" || fail "the transcript shows no menu"
grep -q '"type":"end"' "$work/transcript.jsonl" || fail "the transcript does not end"
[ -s "$work/pictures/0001-slot.png" ] || fail "no pictures written"
ls "$work/pictures" | grep -q 'menu-dark@2x.png' || fail "no menu pictures written"
run "$kibbar" --script "$examples/evening.kbs" --no-queries > /dev/null 2> "$work/evening.err" \
  || { cat "$work/evening.err" >&2; fail "the evening script failed"; }
printf 'wait 30\nclick\n' > "$work/look.kbs"
run "$kibbar" --scenario "$examples/busy-evening.json" --script "$work/look.kbs" > /dev/null 2> "$work/busy.err" \
  || { cat "$work/busy.err" >&2; fail "the busy evening's scenario failed"; }
mv "$moved" "$build"
moved=""

step "manual page"
MANWIDTH=100 man -l "$root/usr/share/man/man1/kibbar.1.gz" > "$work/man.txt" 2> "$work/man.err" \
  || { cat "$work/man.err" >&2; fail "man -l cannot render the page"; }
[ ! -s "$work/man.err" ] || { cat "$work/man.err" >&2; fail "man -l warns"; }
for section in NAME SYNOPSIS DESCRIPTION FRONTENDS OPTIONS SCENARIOS SCRIPTS FILES ENVIRONMENT "EXIT STATUS"; do
  grep -q "^$section" "$work/man.txt" || fail "the manual page has no $section section"
done
options=$("$kibbar" --help | grep -o -- '--[a-z][a-z-]*' | sort -u)
for option in $options --panel --backend; do
  grep -q -- "$option" "$work/man.txt" || fail "the manual page does not mention $option"
done

step "desktop entries"
desktop-file-validate "$root/usr/share/applications/kibbar.desktop"
desktop-file-validate "$root/etc/xdg/autostart/kibbar.desktop"
grep -q '^Exec=kibbar --panel' "$root/etc/xdg/autostart/kibbar.desktop" || fail "the autostart entry does not start kibbar --panel"

echo "test-package: all passed"
