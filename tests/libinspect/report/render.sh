#!/bin/bash
# render.sh VELTRA DIRECTORY
# Makes the page of a varied job and renders it in a browser: wide, narrow, dark and printed, into DIRECTORY. Fails when
# a picture is missing or empty, or when the browser complained of the page or asked for anything but the page.
set -euo pipefail
. "$(dirname -- "$0")/../../../scripts/lib.sh"
veltra=$(realpath -- "$1")
pictures=$(realpath -m -- "$2")
job=$pictures/job
page=$pictures/report.html
rm -rf "$pictures"
mkdir -p "$pictures"
profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT

# Copper and fibre, every verdict, a bound, values that are none, an outlier, a name that is markup.
mkdir "$job"
count=0
while IFS= read -r description; do
  printf -v file '%s/%05d.vres' "$job" $((++count))
  "$veltra" pack - -o "$file" <<< "$description" > /dev/null
done < "$root/tests/data/cli/varied_job.txt"
printf '\377' | dd of="$job/00005.vres" bs=1 seek=40 conv=notrunc status=none
truncate -s 50 "$job/00009.vres"
echo after >> "$job/00010.vres"
status=0
(cd "$pictures" && "$veltra" report -q -r job --expect A001..A036 --title 'Northgate House, floor 2' -o "$page") || status=$?
[[ $status == 1 ]] || die "a job with damaged files and missing IDs answered $status"

# render PICTURE FLAG...: one run of the browser, with a new profile and no way out.
render() {
  local picture=$pictures/$1 log=$pictures/$1.log net=$pictures/$1.net.json
  shift
  timeout 3600 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync --disable-default-apps \
    --proxy-server=127.0.0.1:9 --hide-scrollbars --user-data-dir="$profile/$RANDOM" --enable-logging=stderr --log-net-log="$net" "$@" \
    "file://$page" > "$log" 2>&1 || { cat "$log"; die "the browser could not render ${picture##*/}"; }
  [[ $(stat -c %s "$picture") -gt 20000 ]] || die "${picture##*/} is empty"
  if grep -F CONSOLE "$log"; then die "the browser complained of the page"; fi
  # The browser makes requests of its own, which fail at the unusable proxy; those of the page have its origin.
  [[ -s $net ]] || die "the browser kept no log of its requests"
  if grep -F '"network_isolation_key":"file:' "$net" | grep -oE '"url":"[^"]*"' | grep -vF '"url":"file:'; then
    die "the page asked for the addresses above"
  fi
}

render wide.png --window-size=1400,3600 --screenshot="$pictures/wide.png"
render narrow.png --window-size=390,9000 --screenshot="$pictures/narrow.png"
render dark.png --window-size=1400,1600 --blink-settings=preferredColorScheme=0 --screenshot="$pictures/dark.png"
render report.pdf --no-pdf-header-footer --print-to-pdf="$pictures/report.pdf"
quietly pdftoppm -r 60 -png "$pictures/report.pdf" "$pictures/print"
pdftotext -layout "$pictures/report.pdf" "$pictures/print.txt"
for words in 'Expected IDs' Copper Fibre 'Files that need attention' 'header CRC differs'; do
  grep -qF "$words" "$pictures/print.txt" || die "\"$words\" is not in the printed page"
done
# A long table begins each sheet with its header again.
[[ $(grep -c 'Verdict  *ID' "$pictures/print.txt") -gt 3 ]] || die "the table's header is not repeated in print"
say "rendered wide, narrow, dark and in $(ls "$pictures"/print-*.png | wc -l) printed pages"
