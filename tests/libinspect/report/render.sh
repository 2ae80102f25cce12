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
verdicts=(Pass Pass 'Pass star' Pass Fail 'Fail star' Pass)
for ((i = 1; i <= 40; ++i)); do
  id=$(printf 'A%03d' "$i") type=COPPER verdict=${verdicts[i % 7]} length=$((12 + i * 37 % 80)).$((i % 10)) headroom=$((i * 13 % 7 - 2)).$((i % 9))1
  case $i in
    *[789]) id=B${id#A} type=FIBER length=$((300 + i * 41)) ;;
    12) id='<img src=x onerror=alert(1)>\u0007 & \u202eTAB' ;;
    16) verdict='Not set' length=N/A headroom=NaN ;;
    22) verdict=Fail headroom=-48.00 ;;
    23) length=2000.0 ;;
    31) id='Drum 0418' type=NOT_SET verdict=Show length='>150.0' headroom=--- ;;
  esac
  printf '{"summary": {"resultName": "%s", "resultType": "%s", "status": "%s", "length": "%s", "headroom": "%s",
    "timeStamp": %d, "numPassTests": 14}}' "$id" "$type" "$verdict" "$length" "$headroom" $((1706691600 + i * 310)) |
    "$veltra" pack - -o "$(printf '%s/%05d.vres' "$job" "$i")" > /dev/null
done
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
