#!/bin/bash
# render.sh VELTRA DIRECTORY
# Makes the page of a varied job and renders it in a browser: wide, narrow, dark and printed, into DIRECTORY. Fails when
# a picture is missing or empty, when the browser complained of the page or asked for anything but the page, or when the
# page does not keep what browse.mjs asks of it.
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
(cd "$pictures" && "$veltra" report -q -r job --expect A001..A036 --edition technician --title 'Northgate House, floor 2' -o "$page") || status=$?
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
for words in 'Links that need work' 'All links' Copper Fibre 'Files that need attention' 'header CRC differs' 'Page 2 of'; do
  grep -qF "$words" "$pictures/print.txt" || die "\"$words\" is not in the printed page"
done
grep -qF '.vres' <(sed '/^Files$/,$d' "$pictures/print.txt") && die "names of files are printed before the files"
# print_on SIZE PAGE: the page as it is printed on this paper; what it says goes into PAGE-SIZE.txt, a form feed after
# each sheet.
print_on() {
  page=$2-$1.html
  sed "s/^@page { margin/@page { size: $1; margin/" "$2.html" > "$page"
  render "${2##*/}-$1.pdf" --no-pdf-header-footer --print-to-pdf="$2-$1.pdf"
  pdftotext -layout "$2-$1.pdf" "$2-$1.txt"
}
# sheets FILE PATTERN: how many sheets have a line of this pattern.
sheets() { awk -v RS='\f' -v pattern="$2" '$0 ~ pattern { ++n } END { print n + 0 }' "$1"; }

# The large job of the examples fits forty sheets; its table begins each sheet with its header again. The grid of 500 IDs
# of 14 letters fits two, and a long ID leaves the other columns of the table as they are.
cell='NORTHGATEAB[^\n]*' large=$pictures/large wide=$pictures/wide-ids
"$root/examples/make_job" "$veltra" "$large" > /dev/null
"$veltra" report -q "$large" -o "$large.html" > /dev/null || [[ $? == 1 ]]
printf '{"summary": {"resultName": "%s", "resultType": "COPPER", "status": "Pass", "length": "45.1"}}' "$(printf 'W%.0s' {1..90})" |
  "$veltra" pack - -o "$wide.vres" > /dev/null
"$veltra" report -q "$wide.vres" --expect NORTHGATEAB001..NORTHGATEAB500 -o "$wide.html" > /dev/null || [[ $? == 1 ]]
for size in A4 Letter; do
  print_on $size "$large"
  count=$(sheets "$large-$size.txt" .)
  [[ $count -le 40 ]] || die "the large job takes $count sheets of $size"
  [[ $(sheets "$large-$size.txt" 'Verdict  *ID') -gt 5 ]] || die "the table's header is not repeated in print"
  print_on $size "$wide"
  count=$(sheets "$wide-$size.txt" "$cell$cell$cell")
  [[ $count == [12] ]] || die "the grid of 500 IDs takes $count sheets of $size"
  grep -q 'W  *Copper  *45[.]1' "$wide-$size.txt" || die "a long ID breaks the columns of the printed table"
done

# Names made to be more than text, and how the page shows them; a picture, JSON and a record in the same result.
printf '%s\n' '<script>foreign1=1</script>' '<img id=foreign2 src=x onerror=foreign2=1>' '{{title}}{{{script}}}{{/rows}}' \
  '</script></style><b id=foreign3>' "' onload='foreign4=1" '" onload="foreign5=1' '--><i id=foreign6>' '#link-A-001' \
  "\\'+foreign7+'" > "$pictures/names.txt"
printf 'P5 40 2000 255\n' > "$pictures/image.pgm"
head -c 80000 /dev/zero | tr '\0' '\201' >> "$pictures/image.pgm"
"$root/examples/make_job" "$veltra" "$pictures/hostile-job" 12 4 > /dev/null
columns=$(printf '"ColumnWithoutSpaces%d": "0.123456789", ' {1..9})
count=0
while IFS= read -r name; do
  count=$((count + 1))
  json=$(sed 's/[\\"]/\\&/g' <<< "$name")
  printf '{"measuredHeadroomOfPair": "%s", "%s": ["%s", {"%s": 1.50}], "wide": [{%s "%s": 1}, {%s "%s": 2}]}' "$(printf 'a long text %.0s' {1..70})" "$json" "$json" "$json" "$columns" "$json" "$columns" "$json" \
    > "$pictures/payload.json"
  printf '{"summary": {"resultName": "%s", "resultType": "COPPER", "status": "Fail", "headroom": "-1.0"}, "sections": [
    {"type": 910, "version": 1, "payload": "%s"}, {"type": 326, "version": 2, "payload": "%s"}]}' \
    "$json" "$pictures/payload.json" "$pictures/image.pgm" |
    "$veltra" pack - -o "$pictures/hostile-job/$count.vres" > /dev/null
done < "$pictures/names.txt"
printf '{"title": "%s", "customer": "</script>\\u2028\\u202e<b id=foreign8>"}' "$json" > "$pictures/hostile-job/job.json"
printf '%s\n' '</script>' '\xe2\x80\xae<b id=foreign8>' >> "$pictures/names.txt"
"$veltra" report -q "$pictures/hostile-job" --edition technician -o "$pictures/hostile.html" > /dev/null || [[ $? == 1 ]]
modules=$root/build/browser
command -v npm > /dev/null || install_packages browse
[[ -d $modules/node_modules/axe-core && -d $modules/node_modules/puppeteer-core ]] ||
  quietly npm install --silent --no-save --no-audit --no-fund --ignore-scripts --prefix "$modules" \
    axe-core@4.14.1 puppeteer-core@25.16.0
node "${0%/*}/browse.mjs" "$modules" "$pictures/hostile.html" "$pictures/names.txt" || die "the page does not keep its promises"
say "rendered wide, narrow, dark and in $(ls "$pictures"/print-*.png | wc -l) printed pages"
