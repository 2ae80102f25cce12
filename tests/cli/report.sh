# A page from results: what is on it, what it is called with, what it answers.
pack() { # FILE ID TYPE STATUS LENGTH HEADROOM
  printf '{"summary": {"resultName": "%s", "resultType": "%s", "status": "%s", "length": "%s", "headroom": "%s",
    "timeStamp": "2024-01-31T09:15:00Z", "numPassTests": 12}}' "${@:2}" > result.json
  veltra pack result.json -o "$1" > /dev/null
}
# page FILE: the words of a page, a line each, without its style sheet, its script and its drawings' texts.
page() {
  sed -e '/<style>/,/<\/style>/d' -e '/<script>/,/<\/script>/d' -e 's/<\/*bdi>//g; s/<wbr>//g' -e 's/<svg class="chart".*<\/svg>//' -e 's/<\/\(li\|td\|th\)>/|/g; s/<\/p>/\n/g; s/<[^>]*>/ /g; s/  */ /g' "$1" |
    grep -v '^[ |]*$'
}
# lead FILE: the verdict, and what to know first. from FILE HEADING: all from that on.
lead() { page "$1" | sed -n '3,4p'; }
from() { page "$1" | sed -n "/^ $2/,\$p"; }
mkdir -p job/sub empty
pack job/1.vres A01 COPPER Pass 45.2 3.10
pack job/2.vres A02 COPPER 'Fail star' 88.0 -0.20
pack job/3.vres '<b>A04</b> & \u001b[31m' COPPER 'Pass star' '>90.0' NaN
pack job/sub/4.vres A02 FIBER Pass 1204 1.50
pack job/sub/5.vres A05 FIBER Pass 900 2.50
pack job/sub/6.vres A06 FIBER Fail 700 -2.50

t veltra report -r job -o job.html
page job.html
t veltra report -r job -o job.html
t veltra report job/1.vres job/sub/5.vres -o job.html --force --title 'Floor <2>' -f json
grep -c '<h1><bdi>Floor &lt;2&gt;</bdi></h1>' job.html
t veltra report -r job -o all.html --expect A01..A04
page all.html | sed -n '/^ Expected/,/^ Results/p'
veltra report -j 1 -r job -o one-thread.html > /dev/null
veltra report -j 4 -r job -o four-threads.html > /dev/null
t cmp one-thread.html four-threads.html
t veltra report job/1.vres job/2.vres job/sub/5.vres -o foreign.html --expect A01..A02
# A link that is not expected and failed is told where whoever signs looks; nor is a file passed over that is too large.
pack foreign1.vres A0l COPPER 'Fail star' 45 -1 && pack foreign2.vres A0l COPPER Fail 46 -2 && pack foreign3.vres A0l FIBER Fail 47 -1
veltra report -q job/1.vres foreign?.vres -o failed.html --expect A01 --count all > /dev/null
page failed.html | sed -n '3,11p; /^ Links that need/,/^ All/p'
mkdir limit && cp job/1.vres limit/A01.vres && cp job/2.vres limit/A02.vres && head -c 1000 /dev/zero >> limit/A02.vres
t veltra report -q limit -o limit.html --max-size 500 --expect A01..A03
lead limit.html
page limit.html | grep -E 'too large|^ Not tested A0|^ No result'
rm foreign?.vres
# Names cannot change the order of what stands around them.
grep -oE '<bdi( class="file")?>[^<]*</bdi>' foreign.html | sort | uniq -c
t veltra report job/1.vres job/2.vres job/sub/4.vres -o twice.html --expect A01..A02

# Damage: the page is made all the same, and says so. The page of last time is no file of the job.
patch job/sub/6.vres 60 ff
printf more >> job/sub/5.vres
truncate -s 30 job/2.vres
t veltra report -q -r job -o job/page.html
t veltra report -q -r job missing.vres -o job/page.html --force
lead job/page.html
page job/page.html | grep -cE 'E0[1-9]|W0[1-9]|offset|veltra '
from job/page.html 'Files that could'
t veltra report -q -r job missing.vres -o job/page.html --force --edition technician
lead job/page.html
from job/page.html 'What to know'
{ veltra summary -q -r job > /dev/null; echo $?; } > summary.code
{ veltra report -q -r job -o job/page.html --force > /dev/null; echo $?; } > report.code
t cmp summary.code report.code
# When nothing could be read, or a folder cannot be listed, or there are no results, the old page stays.
t veltra report -q job/1.vres missing.vres -o kept.html
cp kept.html old.html
mkdir deep && cp job/1.vres deep && echo notes > empty/notes.txt
# A folder whose path is too long to be opened: made step by step, and named by the last letters of the complaint.
(cd deep && for _ in {1..21}; do mkdir "$(printf "%0200d" 0)" && cd 0*; done)
unlistable() { veltra report -r deep -o kept.html --force 2>&1 | grep -o ': [^:]*$'; return "${PIPESTATUS[0]}"; }
t unlistable
t veltra report missing.vres -o kept.html --force
t veltra report missing.vres -o kept.html --force --expect A01..A02
t veltra report -r empty -o kept.html --force
t veltra summary -r empty
t cmp kept.html old.html
rm empty/notes.txt
t veltra report -r empty -o empty.html
t veltra summary -r empty
# Nothing but damage: the page says what to do. A result that cannot be read again when its sections are due is named.
mkdir lost && cp job/2.vres lost
t veltra report -q lost -o lost.html
page lost.html | sed -n '2,$p'
from_input() { veltra report - -o input.html < job/1.vres; }
t from_input
from input.html 'Each link' | sed '/^ Back/d; /A link is/d'
# An expected ID is damaged, not missing, when the summary in a damaged file or the name of one tells it. A09 was tested
# again, and A07 twice more.
mkdir -p again/old && cp job/1.vres again/1.vres && patch again/1.vres 8 ff
pack again/A02.vres A02 FIBER Pass 1 1 && truncate -s 60 again/A02.vres
pack again/A09.vres A09 FIBER Pass 1 1 && cp again/A09.vres again/old && patch again/old/A09.vres 90 ff
for i in 7 8 9; do pack again/$i.vres A07 FIBER Pass 1 1; done
pack again/x.vres A08 FIBER Pass 1 1 && echo trailing >> again/x.vres && patch again/x.vres 20 ff
t veltra summary -q -r again --expect A01..A09
veltra summary -q -r again --expect A01..A09 -f json | grep -A3 '"damaged"'
t veltra report -q -r again -o again.html --expect A01..A09
lead again.html
from again.html 'Passed A07'
t veltra report -r empty -o empty.html --expect A01..A02
lead empty.html

# A whole job: its description, history, the zone of the times; what the sections hold, without secrets and settings.
make_job=$data/../../examples/make_job
"$make_job" "$veltra" small 12 4
cp "$data/cli/payload.json" "$data/good/equipment_information_v3.bin" "$data/good/orbel_settings_v0.bin" .
printf 'P5 2 2 255\n\0\125\252\377' > image.pgm
printf '\211PNG\r\n\032\n\0\0\0\rIHDR\0\0\200\0\0\0\200\0\10\0\0\0\0' > large.png
printf '{"summary": {"resultName": "A-009", "resultType": "COPPER", "status": "Pass", "timeStamp": 1774753200}, "sections": [
  {"type": 910, "version": 1, "payload": "payload.json"}, {"type": 920, "version": 1, "payload": "large.png"},
  {"type": 326, "version": 2, "payload": "image.pgm", "compress": true}, {"type": 104, "version": 1, "payload": "orbel_settings_v0.bin"},
  {"type": 5, "version": 1, "payload": "equipment_information_v3.bin"}]}' | veltra pack - -o small/A-009.vres > /dev/null
t veltra report -q small -o small.html --timezone Europe/Berlin
page small.html | sed -n '1,/^ Contents/p; /^ Passed A-005/,/^ Back/p; /^ Passed A-009/,/^ Back/p'
grep -oE 'base64,[^"]*" alt="Pict[^>]*' small.html
t grep -c '<details open' small.html
t veltra report -q small -o small.html --force --details --count all --edition technician
t grep -c '<details open' small.html
page small.html | grep -E '^ Tested again|_RAW:|cannot be shown|settings, not' | sort -u
# The logo is a picture, or there is no page.
echo '{"logo": "logo.png"}' > small/job.json
t veltra report -q small -o logo.html
cp large.png small/logo.png
t veltra report -q small -o logo.html
printf '\211PNG\r\n\032\n\0\0\0\rIHDR\0\0\0\200\0\0\0\200\10\0\0\0\0' > small/logo.png
t veltra report -q small -o logo.html
base64 -d <<< iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAACklEQVR42mNgAAAAAgAB5Sfe/AAAAABJRU5ErkJggg== > small/logo.png
t veltra report small -o logo.html
grep -o '<img class.*' logo.html

# What cannot be shown, or only in part, is said; a picture that is cut is none.
head -c 40 small/logo.png > cut.png
printf '{"a": 1, "b": 2, "a": 3, "": 5}' > twice.json
printf 'P5 2896 2896 255\n' > huge.pgm && head -c 8386816 /dev/zero >> huge.pgm
huge=$(printf ', {"type": 326, "version": 2, "payload": "huge.pgm", "compress": true}%.0s' {1..5})
printf '{"summary": {"resultName": "H", "resultType": "COPPER", "status": "Pass", "timeStamp": 9223372036854775807}, "sections": [
  {"type": 920, "version": 1, "payload": "cut.png"}, {"type": 910, "version": 1, "payload": "twice.json"}%s]}' "$huge" |
  veltra pack - -o huge.vres > /dev/null
veltra report -q huge.vres -o huge.html > /dev/null
page huge.html | grep -E '92233|given twice|cannot be'
veltra report -q huge.vres -o huge.html --force --edition technician > /dev/null
page huge.html | grep -E 'given twice|cannot be'
lines=$(printf ', {"f": %d, "limit": 1, "next": 2}' {1..700})
printf '{"sweep": [%s]}' "${lines:2}" > sweep.json
echo '{"summary": {"resultName": "S", "resultType": "COPPER"}, "sections": [{"type": 910, "version": 1, "payload": "sweep.json"}]}' |
  veltra pack - -o sweep.vres > /dev/null
veltra report -q sweep.vres -o sweep.html > /dev/null
grep -o 'data-column="f"\|and [0-9]* values not shown' sweep.html | uniq -c
# Long texts are cut where they are shown; the link keeps its address.
mkdir long && pack long/1.vres "$(printf 'W%.0s' {1..3000})" COPPER Pass 1 1
printf '{"title": "%s", "customer": "%s", "site": "%s"}' "$(printf 'T%.0s' {1..3000})" "$(printf 'C%.0s' {1..3000})" "$(printf 'line\\n%.0s' {1..90})" > long/job.json
veltra report -q long -o long.html > /dev/null
page long.html | grep -oE '[TCW]?[^TCW]*\([0-9]* bytes[^)]*.' | sort | uniq -c
page long.html | grep -cE '[TCW]{2001}|(line ){41}'
grep -cE 'id="link-W{3000}"' long.html

# Lines of a site address stay lines, other breaks are spaces, and what cannot be seen is not there or is named.
mkdir unseen && pack unseen/1.vres '  ' COPPER Pass 1 1
echo '{"title": " \n ", "customer": "A\nLtd ", "site": "1 Street\r\nTown", "operator": "\u00a0", "guessed": true}' > unseen/job.json
t veltra report unseen -o unseen.html --title ' ' --edition technician
page unseen.html | sed -n '1,/^ 1 link/p; /unseen char/p; /^ Files/,$p'
TZ=Asia/Tokyo veltra report -q unseen -o unseen.html --force --title "$(printf 'Two\nlines')" > /dev/null
page unseen.html | grep -E 'lines|Asia'

# What it refuses.
t veltra report unseen -o unseen/job.json --force
t veltra report unseen -o empty/job.json
# A page of another version is replaced, also in the folder of the job; a link of the system to an open file is not.
sed -e 2d -e 's/width=device-width/& /' unseen.html > unseen/page.html
t veltra report -q unseen -o unseen/page.html --force
ln -s /proc/self/fd/5 stream && ln -s stream over && ln -s unseen/page.html page-link
for output in stream over /dev/fd/1 /dev/fd/5; do t veltra report -q unseen -o $output --force; done 5> five
echo '{"summary": {"resultName": "A"}}' > plain.json && exec 5>> five
t veltra pack plain.json -o over --force
t veltra recover job/1.vres -o over --force
t veltra extract job/1.vres --section 1 -o over --force
t veltra summary job/1.vres -f sqlite -o over --force
veltra report -q unseen -o out.html > /dev/null && veltra report -q unseen -o out.html --force > out.html
t veltra report -q unseen -o page-link --force
exec 5>&- && readlink stream over page-link
rm stream over page-link
t veltra report small -o small/logo.png --force
t veltra report small -o zone.html --timezone Mars/Phobos
for zone in ../zoneinfo/UTC '' leapseconds right/Europe/Berlin; do t veltra report small -o zone.html --timezone "$zone"; done
for zone in Mars/Phobos right/UTC "$PWD/large.png"; do TZ=$zone veltra report small -o zone.html 2>&1 | sed "s|$PWD|PWD|"; done
for zone in CET-1CEST,foo,bar CET-1CEST,M13.5.0,M10.5.0 CET99 CET-1CEST,M3.5.0; do TZ=$zone t veltra report small -o zone.html; done
for zone in CET-1CEST,M3.5.0,M10.5.0/3 '<-03>3<-02>,J60/-2:30,364/167' :Asia/Tokyo ''; do TZ=$zone veltra report -q small -o zone.html --force > /dev/null; page zone.html | grep ' Times'; done
rm zone.html
t veltra report job/1.vres -o job/1.vres --force
t veltra report job/1.vres -o nowhere/page.html
t veltra report job/1.vres -o x.html --expect A2..A1
t veltra report job/1.vres
t ls
