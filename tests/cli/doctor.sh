# What doctor finds, at each depth, in each format, in whole folders; and what other commands say of the same files.
printf 'trace data\n%.0s' {1..50} > trace.bin
mkdir -p lot/sub names
veltra pack "$data/cli/two_payloads.json" --payloads . -o lot/whole.vres > /dev/null
damaged() { file=lot/sub/$1.vres && cp lot/whole.vres "$file"; }

damaged e01-unclosed && never_closed "$file"
damaged e02-not-one && patch "$file" 0 00
damaged e03-header && patch "$file" 30 ff
damaged e04-data && patch "$file" 60 ff
damaged e04-nothing && patch "$file" 104 0000000000000000 && header_crc "$file" 96
damaged e04-total && patch "$file" 20 00000000
damaged e05-cut && truncate -s 400 "$file"
damaged e05-header && truncate -s 150 "$file"
damaged e06-short && truncate -s 145 "$file"
damaged e07-inflate && patch "$file" 120 ffff && data_crc "$file" 96 29
damaged e08-too-big && patch "$file" 116 01008000 && data_crc "$file" 96 29
damaged e09-record && patch "$file" 50 77 && data_crc "$file" 24 52
damaged e10-scale && patch "$file" 79 09 && data_crc "$file" 24 52
damaged e11-no-summary && patch "$file" 26 006e && header_crc "$file" 24
damaged w01-newer && patch "$file" 101 0d && header_crc "$file" 96
damaged w02-type && patch "$file" 98 7777 && header_crc "$file" 96
damaged w03-after && echo more >> "$file"
damaged w03-header && head -c 20 /dev/zero >> "$file"
damaged w03-section && tail -c +25 lot/whole.vres | head -c 72 >> "$file"
damaged e03-after && patch "$file" 99 09 && head -c 20 /dev/zero >> "$file"
damaged w04-count && patch "$file" 95 80 && data_crc "$file" 24 52
damaged w05-magic && patch "$file" 24 4747 && header_crc "$file" 24
# A package of zeros is no package; a record of more than 8 MiB is not decoded.
for kind in limit cable; do
  echo '{"version": "V1.0", "databases": [{"path": "x"}]}' |
    veltra manifest new - -o lot/sub/$kind.pkg $([[ $kind == limit ]] || echo --cable)
  size=$(($(stat -c %s lot/sub/$kind.pkg) - 44))
  truncate -s 44 lot/sub/$kind.pkg && truncate -s $((size + 44)) lot/sub/$kind.pkg && data_crc lot/sub/$kind.pkg 24 $size
done
tail -c +45 lot/whole.vres | head -c 52 > large.bin && truncate -s 8388609 large.bin
echo '{"summary": {}, "sections": [{"type": 301, "version": 3, "payload": "large.bin"}]}' > large.json
veltra pack large.json -o lot/sub/w06-large.vres > /dev/null

t veltra doctor lot/whole.vres
# Every finding is shown below.
veltra types -f csv | sed -n 's/^finding,[0-9]*,\([^,]*\),.*/\1/p' | sort > known.txt
veltra doctor -q -r lot --deep -f csv | grep -o ',[EW][0-9][0-9],' | tr -d , | sort -u > shown.txt
t diff known.txt shown.txt
t veltra doctor -r lot --deep
t veltra doctor -r lot --quick -f csv -j 1
t veltra doctor lot/sub/w01-newer.vres
t veltra doctor lot/sub/e04-data.vres lot/sub/w03-after.vres -f jsonl
t veltra doctor lot/sub/w03-after.vres missing.vres lot -f json
# A compressed file header that cannot be uncompressed stops every reader.
cp lot/whole.vres odd.vres && patch odd.vres 6 0001 && header_crc odd.vres 0
t veltra doctor odd.vres
t veltra doctor odd.vres --quick
cp lot/whole.vres odd.vres && patch odd.vres 0 4747 && header_crc odd.vres 0 && t veltra doctor odd.vres

# A folder as it comes: what is no container is counted, unless it may be what is left of a result. Two files of one name
# are recovered side by side.
mkdir -p mixed/sub
cp lot/whole.vres mixed/whole.VRES
cp trace.bin mixed/notes.txt && echo '<!DOCTYPE html>' > mixed/page.html && echo no > mixed/sub/no
: > mixed/empty.bin && truncate -s 300000 mixed/zeros.bin && printf PF > mixed/begun.bin && cp trace.bin mixed/lost.vres
(head -c 131060 /dev/zero | tr '\0' x && head -c 24 lot/whole.vres) > mixed/within.bin
cp lot/sub/e04-data.vres mixed/same.vres && cp lot/sub/e03-header.vres mixed/sub/same.vres
t veltra doctor -r mixed
t veltra doctor mixed/notes.txt mixed/lost.vres -f json
t veltra info -q mixed/notes.txt mixed/whole.VRES
t veltra doctor mixed/whole.VRES mixed/lost.vres -q
# Every command calls the same files damaged, and --deep calls more of them so and says how many findings it adds.
cp -r lot/sub mixed/lot
veltra doctor -r mixed -f csv 2> /dev/null | awk -F, '$4 ~ /^E/ { print $1 }' | sort -u > doctor.txt
veltra doctor -r mixed -f json 2> /dev/null | grep -A1 '"damaged": true' | sed -n 's/.*"file": "\(.*\)",/\1/p' | sort > json.txt
veltra info -r mixed -f csv 2> /dev/null | awk -F, '$3 == "true" { print $1 }' | sort > info.txt
veltra summary -r mixed 2>&1 > summary.out | sed -n 's/^veltra: \([^:]*\): offset.*: E[0-9][0-9] .*/\1/p' | sort -u > summary.txt
veltra report -q mixed --edition technician -o page.html > report.out
sed -n 's/.*damaged:<\/b> <bdi>\([^<]*\)<.*/\1/p' page.html | sort > report.txt
for command in json info summary report; do t diff doctor.txt $command.txt; done
t cat report.out
grep -o '[^>]*no containers[.]' page.html
veltra doctor -r mixed --deep -f csv 2> deep.err | awk -F, '$4 ~ /^E/ { print $1 }' | sort -u > deep.txt
t diff doctor.txt deep.txt
t cat deep.err
veltra doctor -r mixed --deep -f json 2> /dev/null | tail -n 4
t veltra doctor -r mixed/empty.bin -f jsonl
grep -o 'Next: [^<]*again' page.html | sort | uniq -c
# A summary that comes later is found. What is to be written has a name of its own, which is not too long.
{ head -c 24 lot/whole.vres; tail -c +97 lot/whole.vres | head -c 49; tail -c +25 lot/whole.vres | head -c 72; } > later.vres
t veltra doctor later.vres
long=$(printf 'ü%.0s' {1..120}).vres && cp lot/sub/e04-data.vres "$long" && cp lot/sub/e04-data.vres e04-data.vres
: > e04-data.recovered.vres && ln -s nowhere e04-data.recovered-2.vres
t veltra doctor e04-data.vres
eval "$(veltra doctor "$long" | sed 's/.*next: //')" > /dev/null; ls | grep -c 'ü.recovered.vres'
t veltra doctor <(cat e04-data.vres) | sed 's/fd.[0-9]*/fd/'
t veltra manifest show lot/sub/limit.pkg

: > empty.vres
t veltra info lot/sub/e01-unclosed.vres lot/sub/e03-header.vres lot/sub/e04-data.vres empty.vres
t veltra info -q lot/sub/w03-{header,section}.vres lot/sub/e0{3-after,5-header}.vres -f csv
t veltra show lot/sub/e04-nothing.vres -s 2
t veltra recover lot/sub/e04-nothing.vres -o nothing.vres
t veltra list lot/sub/e04-total.vres
t veltra list lot/sub/e05-cut.vres
t veltra list lot/sub/w05-magic.vres
t veltra show lot/sub/e04-data.vres
t veltra show trace.bin

# The next command can be given to a shell, whatever the file is called.
for name in ' a;b' "it's" $'\e[31m\n\\x\xff' '$(touch pwned)'; do cp lot/sub/e04-data.vres "names/$name"; done
cp lot/sub/e04-data.vres ./-r
t veltra doctor -r names
t veltra doctor -- -r
input=-r t veltra doctor -
next() { veltra doctor -r names -f jsonl | sed -E 's/.*"next":"veltra recover (.*) -o [^"]*".*/\1/; s/\\\\/\\/g'; }
eval "set -- $(next | tr '\n' ' ')"
cmp -s "$1" ./-r && cmp -s "$2" ./-r && cmp -s "$3" ./-r && cmp -s "$4" ./-r && echo "$# files found again"

# What is no container is the same for commands that look at one file: named, it is 4, in a folder it is counted.
for command in list annotate "show -s 1" "extract -s 1"; do t veltra $command mixed/notes.txt; done
t veltra list -r mixed -f csv -q | grep notes
t veltra list -q mixed/notes.txt mixed/whole.VRES -f json
