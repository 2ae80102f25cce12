#!/bin/bash
# run.sh VELTRA DIRECTORY
# Compares the module of the page with the command VELTRA, and tries the page in Chromium on files made in DIRECTORY.
set -euo pipefail
. "$(dirname -- "$0")/../../scripts/lib.sh"
veltra=$(realpath -- "$1")
folder=$(realpath -m -- "$2")
made=$root/build/browser
export TZ=Europe/Berlin
rm -rf -- "$folder"
mkdir -p -- "$folder"
cd -- "$folder"
"$root/examples/make_job" "$veltra" job 12 4

# What no instrument writes. Each container is a file header, and sections that have valid headers.
python3 - << 'END'
import os, struct, zlib
def header(kind, version, flags, data_size, data_crc):
    begin = struct.pack(">HHHHII", 0x5046, kind, version, flags, data_size, data_crc)
    return begin + struct.pack(">I", zlib.crc32(begin))
def section(kind, version, flags, data):
    return header(kind, version, flags, len(data), zlib.crc32(data)) + data
def container(sections, size=0):
    length = struct.pack("<I", 24 + len(sections) + size)
    return header(1, 1, 0, 4, zlib.crc32(length)) + length + sections
with open("job/A-001.vres", "rb") as good:
    result = good.read()[24:]
os.mkdir("large")
with open("large/large.vres", "wb") as large:  # of a section of 2.5 GiB only its header and its end are stored
    size = 5 << 29
    large.write(container(result + header(302, 1, 0, size, 0x12345678), size))
    large.truncate(large.tell() + size)
    large.seek(0, 2)
    large.write(section(302, 1, 0, b"x" * 1000))
    large.truncate(2_700_000_000)
os.mkdir("logo")
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
with open("logo/mark.png", "wb") as mark:
    mark.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 0, 0, 0, 0)) +
               chunk(b"IDAT", zlib.compress(bytes(2))) + chunk(b"IEND", b""))
with open("logo/job.json", "w") as job:
    job.write('{"logo": "mark.png", "expected": ["A-001"]}')
os.mkdir("ending")  # a summary that unpacks to 8 MiB
packed = struct.pack("<I", 8 << 20) + zlib.compress(bytes(8 << 20), 9)
with open("ending/B-ends.vres", "wb") as ending:
    ending.write(container(section(200, 1, 1, packed)))
END
cp job/A-001.vres job/A-002.vres ending
cp job/A-001.vres logo
sed 's/<body data-memory="[0-9]*">/<body data-memory="8">/' "$made/veltra.html" > small.html

TZ=$TZ node "$root/tests/browser/compare.mjs" "$made/cmake/veltra.wasm" "$veltra" "$root/tests/vectors" "$root/tests/data" "$root/fuzz/corpus" \
  job ending large

# What the page has to save, and names that are made to be more than text.
"$veltra" summary -q -r -f json job > summary.json || [[ $? == 1 ]]
"$veltra" recover -q job/A-011.vres -o recovered.vres || [[ $? == 3 ]]
for edition in customer technician; do
  "$veltra" report -q job --edition $edition -o $edition.html > /dev/null || [[ $? == 1 ]]
done
printf '{"title": "</script>\\u2028typed", "expected": ["A-001..A-013"]}' > typed.json
"$veltra" report -q job --job typed.json -o typed.html > /dev/null || [[ $? == 1 ]]
mkdir hostile empty
printf '%s\n' '<script>foreign1=1</script>' '<img id=foreign2 src=x onerror=foreign2=1>' '</script></style><b id=foreign3>' \
  "' onload='foreign4=1" '" onload="foreign5=1' '--><i id=foreign6>' $'\xe2\x80\xa8\xe2\x80\xae<b id=foreign7>' '-' > names.txt
count=0
while IFS= read -r name; do
  count=$((count + 1))
  json=${name//\"/\\\"}
  printf '{"summary": {"resultName": "%s", "resultType": "COPPER", "status": "Fail"}, "sections": []}' "$json" |
    "$veltra" pack - -o "hostile/$count.vres" > /dev/null
  head -c 50 job/A-001.vres > "hostile/${name//\//:}"
done < names.txt
tr / : < names.txt | sed 's/^/hostile\//' > files.txt
cat files.txt >> names.txt
node "$root/tests/browser/page.mjs" "$made" "$made/veltra.html" "$folder" || die "the page does not keep its promises"
say "compared with the command, and tried in the browser; pictures in $folder"
