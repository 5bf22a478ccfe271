#!/usr/bin/env bash
# Draws the gallery of the default scenario's menus and of the slot with the
# program's own renderer (kibbar --script … --pictures) and writes
# docs/gallery/*.png and docs/gallery.md. Rerun it after a change to the menus
# or the renderer; the same build gives the same files.
#
#   scripts/gallery.sh [kibbar]      (default: build/host/kibbar)
set -euo pipefail
cd "$(dirname "$0")/.."
kibbar=${1:-build/host/kibbar}
[ -x "$kibbar" ] || { echo "gallery: no program at $kibbar (build it first)" >&2; exit 1; }
out=docs/gallery
work=$(mktemp -d /tmp/kibbar-gallery.XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"
rm -f "$out"/*.png

# shoot NAME KIND SCRIPT: plays the script on the built-in scenario and keeps
# the last picture of KIND (menu or slot) it drew as docs/gallery/NAME[-dark][@2x].png.
shoot() {
  local name=$1 kind=$2 script=$3
  printf '%s\n' "$script" > "$work/$name.kbs"
  "$kibbar" --script "$work/$name.kbs" --no-queries --pictures "$work/$name" > "$work/$name.jsonl"
  local last
  last=$(grep -o "\"of\":\"$kind\",\"file\":\"[0-9]*-$kind.png\"" "$work/$name.jsonl" | tail -n 1 | grep -o '[0-9]*-' | head -n 1)
  [ -n "$last" ] || { echo "gallery: $name drew no $kind" >&2; exit 1; }
  for variant in "" "@2x" "-dark" "-dark@2x"; do
    cp "$work/$name/${last}${kind}${variant}.png" "$out/$name${variant}.png"
  done
}

shoot menu-status menu 'wait 2
click'
shoot menu-offline-mixed menu 'wait 2
event {"type": "account-disconnect", "account": "jabber"}
wait 1
click'
shoot menu-screen-sharing menu 'wait 2
event {"type": "screen-sharing-start", "partner": "Sam Whitfield"}
wait 1
click'
shoot menu-not-connected menu 'wait 2
event {"type": "daemon-disconnect"}
wait 1
click'
shoot menu-text-chats menu 'wait 2
click option'
shoot slot-available slot 'wait 2'
shoot slot-banner slot 'wait 2
event {"type": "status-text", "text": "Leo Brandt is now available"}
wait 2.5'
shoot slot-away slot 'wait 2
click
choose "Away"
wait 1'
shoot slot-offline slot 'wait 2
click
choose "Offline"
wait 1'
shoot slot-sharing slot 'wait 2
event {"type": "screen-sharing-start", "partner": "Sam Whitfield"}
wait 2.5'

# The terminal frontend with its menu open: the capture in docs/screen.txt (its third block) drawn.
capture=$(dirname "$kibbar")/pictures/kibbar-capture
[ -x "$capture" ] || { echo "gallery: no $capture (build the target kibbar-capture)" >&2; exit 1; }
awk '/^```/{block++; next} block == 3' docs/screen.txt > "$work/terminal.txt"
"$capture" "$work/terminal.txt" "$out/terminal.png"

picture() {  # NAME CAPTION: the light and the dark picture side by side
  echo "| ![$2]($(basename "$out")/$1.png) | ![$2, dark]($(basename "$out")/$1-dark.png) |"
}
{
  cat <<'TEXT'
# Gallery

What the extra shows on the built-in scenario (`examples/default-scenario.json`),
drawn by the program itself: `kibbar --script S --pictures DIR` (docs/rendering.md).
`scripts/gallery.sh` makes every picture on this page again; each also exists at
2x (`…@2x.png`, `…-dark@2x.png`).

## The menu

The status section with the saved status messages, the buddies available now,
the service choices and the buddy list entry:

| Light | Dark |
|---|---|
TEXT
  picture menu-status "The default menu"
  cat <<'TEXT'

The Jabber account has gone offline: Offline shows a dash and names the
service, and the current status shows a dash instead of a check mark:

| Light | Dark |
|---|---|
TEXT
  picture menu-offline-mixed "Mixed Offline mark"
  cat <<'TEXT'

Screen sharing with Sam Whitfield: the heading, End Screen Sharing with its
key equivalent Control-Escape and the only indentation:

| Light | Dark |
|---|---|
TEXT
  picture menu-screen-sharing "Screen sharing"
  cat <<'TEXT'

The messaging daemon is not connected:

| Light | Dark |
|---|---|
TEXT
  picture menu-not-connected "Not connected"
  cat <<'TEXT'

Option held: every person's row opens a text chat:

| Light | Dark |
|---|---|
TEXT
  picture menu-text-chats "Option held"
  cat <<'TEXT'

## The slot

| What | Light | Dark |
|---|---|---|
TEXT
  for entry in "slot-available:Available" "slot-banner:A status text scrolling in the banner" \
               "slot-away:Away" "slot-offline:Offline (dimmed)" "slot-sharing:Screen sharing (the blink's glyph)"; do
    name=${entry%%:*} caption=${entry#*:}
    echo "| $caption | ![$caption](gallery/$name.png) | ![$caption, dark](gallery/$name-dark.png) |"
  done
  cat <<'TEXT'

## The terminal frontend

The capture of docs/screen.txt with the menu open, drawn by `kibbar-capture`:

![The terminal frontend with the menu open](gallery/terminal.png)
TEXT
} > docs/gallery.md
echo "gallery: $(ls "$out" | wc -l) pictures in $out, docs/gallery.md"
