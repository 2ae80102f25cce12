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
rm job/notes.txt
t veltra summary -r job -f jsonl --expect A08..A10 -q
t veltra summary job/1.vres --expect A2..A1
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
