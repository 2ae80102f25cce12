# Closer looks: summary, annotate, extract, diff, types.
printf 'trace data\n%.0s' {1..5} > trace.bin
mkdir -p job/sub
result() { # FILE NAME STATUS TIME
  printf '{"summary": {"resultName": "%s", "resultType": "COPPER", "status": "%s", "timeStamp": %s, "length": "12.50",
   "headroom": "> 3"}, "sections": [{"type": 300, "version": 12, "payload": "trace.bin", "compress": true}]}' "$2" "$3" "$4" |
    veltra pack - --payloads . -o "$1" > /dev/null
}
result job/1.vres A10 Pass 100
result job/2.vres A2 Fail 200
result job/sub/3.vres A9 "Pass star" 300
result job/sub/4.vres A9 Pass 400
result job/5.vres B1 Pass 500
echo "no container" > job/notes.txt
t veltra summary -r job --expect A08..A10
for order in "" --unsorted; do
  veltra summary -r job $order -q -f json | grep -o '"otherFiles": [0-9]'
  for format in table json; do t veltra summary job/notes.txt $order -f $format; done
done
rm job/notes.txt
t veltra summary -r job -f jsonl --expect A08..A10 -q
t veltra summary job/1.vres -f csv --expect A08..A09
t veltra summary job/1.vres --expect A2..A1
# Of a folder regular files and links to them, not the folders that links lead to; what is named is tried.
mkdir -p tree/inner && cp job/1.vres tree/c && cp job/2.vres tree/inner/a && mkfifo tree/fifo
ln -s c tree/link && ln -s nowhere tree/dangling && ln -s loop tree/loop && ln -s . tree/inner/up
t veltra info -r tree tree/dangling -f csv
t veltra info tree tree/loop -f csv
t veltra annotate job/1.vres
t veltra annotate job/1.vres -s 0 -f csv
t veltra annotate job/1.vres -s -1 -f csv
t veltra extract job/1.vres -s 2
t veltra extract job/1.vres -s 2 --raw -o raw.bin
t stat -c %s raw.bin
t veltra extract job/1.vres -s 2 -o raw.bin
t veltra extract job/1.vres -s 9
# Nothing that is read is replaced, by whatever name; a page of last time is, a result is not.
cp job/1.vres whole.vres && ln -s whole.vres link.vres && ln whole.vres hard.vres && cp trace.bin again.bin
echo '{"summary": {}, "sections": [{"type": 300, "version": 1, "payload": "again.bin"}]}' > again.json
echo '{"version": "V1.0", "databases": [{"path": "x"}]}' > package.json
for out in whole.vres link.vres ./hard.vres; do t veltra extract whole.vres -s 2 -o $out --force; done
input=whole.vres t veltra extract - -s 2 -o hard.vres --force
t veltra recover link.vres -o hard.vres --force
t veltra pack again.json -o again.json --force
t veltra pack again.json -o again.bin --force
input=again.json t veltra pack - --payloads . -o again.json --force
t veltra manifest new package.json -o package.json --force
t veltra report -r job -o job/1.vres --force
t cmp job/1.vres whole.vres
t veltra diff job/1.vres job/1.vres
t veltra diff job/1.vres job/2.vres -f jsonl
# What is no container is not compared; what is, to its last byte.
t veltra diff trace.bin job/1.vres
t veltra diff job/1.vres /dev/null
t veltra diff trace.bin trace.bin
cp job/1.vres first.vres && patch first.vres 0 00 && t veltra diff first.vres job/1.vres
for copy in tail magic plain bad worse; do cp job/1.vres $copy.vres; done
printf 'xyz' >> tail.vres
patch magic.vres 96 5047 && patch magic.vres 112 "$(crc magic.vres 96 16)"
echo '{"summary": {"resultName": "A10", "resultType": "COPPER", "status": "Pass", "timeStamp": 100, "length": "12.50",
  "headroom": "> 3"}, "sections": [{"type": 300, "version": 12, "payload": "trace.bin"}]}' > plain.json
veltra pack plain.json -o plain.vres --force > /dev/null
patch bad.vres 60 ff && patch worse.vres 60 fe
cp bad.vres lost.vres && truncate -s -3 lost.vres && cp lost.vres lost2.vres && patch lost2.vres 138 ff
for b in tail magic plain bad; do t veltra diff job/1.vres $b.vres; done
t veltra diff bad.vres worse.vres
t veltra diff lost.vres lost2.vres -f jsonl
t veltra diff bad.vres bad.vres
# Two deliveries of a job are compared by ID, whatever the files are called: results that count, those of one ID each with
# its own. A damaged file named as an ID stands for it, also one that is only expected; others are compared by name.
mkdir old new
for id in A1 A4 A6 A7; do result old/$id.vres $id Pass 100 && cp old/$id.vres new; done
result old/A2.vres A2 Fail 100 && result new/again.vres A2 Pass 200
result old/A3.vres A3 Pass 100 && result new/A3.vres A3 Pass 300 && result new/A3-first.vres A3 Fail 50
printf 'xyz' >> new/A4.vres && patch new/A6.vres 60 ff && cp new/A6.vres new/lost.vres
result old/A10.vres A10 Pass 100 && result new/A9.vres A9 Pass 100
result old/B1a.vres B1 Pass 0 && result old/B1b.vres B1 Fail 0 && cp old/B1a.vres new
echo '{"expected": ["D1"]}' | tee old/job.json > new/job.json
cp bad.vres old/D1.vres && cp bad.vres old/same.vres && cp bad.vres new/same.vres
sed 's/A10/A7/' plain.json | veltra pack - --payloads . -o new/A7.vres --force > /dev/null
t veltra diff -q -r old new
t veltra diff -q -r new old -f csv
t veltra diff -q -r old/ ./old -f json
t veltra diff -r old/A2.vres new/again.vres -f jsonl
t veltra diff -q -r bad.vres worse.vres
t veltra diff -r bad.vres bad.vres -f jsonl
t veltra diff -q -r old trace.bin

t veltra types 0x510003
t veltra types "OLTS Set Reference Wizard" -f jsonl
t veltra types nothing
t veltra types otdr_SPAN
t veltra types e11 -f jsonl
t veltra types pon

# Tables end, and are right, in every locale. What it cannot show is escaped, also in the command to run next.
mkdir lot
result "lot/Müllerstraße ★.vres" "Küche ★" Pass 100
cp job/1.vres "lot/Größe.vres" && patch "lot/Größe.vres" 60 ff
in_locale() { env -i "${@:1:1}" timeout 20 "$veltra" "${@:2}"; } # LOCALE ARGUMENT...
as_in() { cmp <(in_locale "$1" "${@:3}" 2>&1) <(in_locale "$2" "${@:3}" 2>&1); } # LOCALE LOCALE ARGUMENT...
for locale in LC_ALL=C LC_ALL=C.UTF-8; do t in_locale $locale summary -q lot/M*; done
t in_locale LC_ALL=C doctor lot/G*
for locale in LC_ALL=POSIX LC_ALL=xx_XX.UTF-8 NONE=set; do
  t as_in LC_ALL=C $locale summary -r lot
done
for format in json jsonl csv; do
  t as_in LC_ALL=C.UTF-8 LC_ALL=C summary -r lot -q -f $format
done

# Memory follows neither the number of sections nor what a payload becomes. What has no end is refused at once.
many() { # FILE BYTE: 32768 sections of one byte
  printf '%s' '{"summary": {}, "sections": [{"type": 300, "version": 1, "payload": "'"$2"'"}]}' > "$1.json"
  printf '%s' "$2" > "$2" && veltra pack "$1.json" -o "$1" > /dev/null && tail -c 21 "$1" > one
  for _ in {1..15}; do cat one one > two && mv two one; done
  { head -c 24 "$1"; cat one; } > "$1.new" && mv "$1.new" "$1"
  patch "$1" 20 18800a00 && patch "$1" 12 "$(crc "$1" 20 4)" && patch "$1" 16 "$(crc "$1" 0 16)"
}
within() { (ulimit -v $((48 * 1024)) && "$veltra" "${@:2}" > "$1"); } # FILE ARGUMENT...
many x.pf x
head -c 8388608 /dev/zero > zeros && sed 's/trace.bin/zeros/; s/}]/, "compress": true}]/' plain.json > bomb.json
veltra pack bomb.json -o bomb.vres > /dev/null
for format in table json jsonl csv; do
  t within list.$format list x.pf -f $format
  t within show.$format show bomb.vres -s 2 -f $format
done
for format in table json; do t within diff.$format diff x.pf bomb.vres -f $format; done
t within annotated annotate x.pf
t wc -l list.table list.csv diff.table diff.json show.table annotated
t cmp list.table <(cat x.pf | "$veltra" list -)
# Nor does doctor hold what a record is followed by, whatever its section says it is.
cp "$data/good/orbel_settings_v0.bin" zeros && truncate -s 40M zeros && sed 's/trace.bin/zeros/' plain.json > large.json
veltra pack large.json -o large.vres > /dev/null && { head -c 24 large.vres; tail -c +97 large.vres; } > first.vres
for header in 0068000c0000 012d00030000 012d00036001 00c800010000 006500010000; do # type, version, flags
  patch first.vres 26 $header && header_crc first.vres 24 && t within doctor.txt doctor first.vres -q -j 1 --deep -f csv
  cut -d, -f2-5 doctor.txt
done
# A long pipe is kept in a file, if there is room for it.
head -c 12000000 /dev/zero > zeros && sed 's/trace.bin/zeros/' plain.json > big.json && veltra pack big.json -o big.vres > /dev/null
piped() { cat big.vres | (TMPDIR=$1 && export TMPDIR && ulimit -v "$2" && "$veltra" extract - -s 2) | cmp - zeros; }
t piped . $((48 * 1024))
t piped missing unlimited
for what in false true; do
  printf '%s' '{"summary": {}, "sections": [{"type": 300, "version": 1, "compress": '$what', "payload": "/dev/zero"}]}' > zero.json
  t within packed pack zero.json -o zero.vres
done
t within packed pack /dev/zero -o zero.vres
