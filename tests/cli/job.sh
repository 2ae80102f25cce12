# Jobs: what is expected, what counts, what needs work. One link for each rule of what counts.
result() { # FILE ID STATUS TIME MEDIUM TESTS
  printf '{"summary": {"resultName": "%s", "status": "%s", "timeStamp": %s, "resultType": "%s", "testFlags": [%s]},
    "sections": []}' "$2" "$3" "$4" "$5" "$6" | veltra pack - -o "job/$1.vres" > /dev/null
}
mkdir job
t veltra job status job
t veltra job init job
result 01 P1 Pass 100 COPPER 1,2 && cp job/01.vres "job/01 copy.vres"
result 02 P2 Fail 100 COPPER 1,2 && result 02b P2 "Pass acceptable" 200 COPPER 1,2,4
result 03 P3 Fail 100 COPPER 1,2,4 && result 03b P3 Pass 200 COPPER 1,2
result 04 P4 Fail 100 COPPER 1 && result 04b P4 "Pass star" 200 FIBER 1
result 05 P5 "Fail star" 100 COPPER 1 && result 05b P5 Pass 0 COPPER 1
result 06 P6 Fail 100 COPPER 1 && result 06b P6 Pass 100 COPPER 1
result 07 P7 Pass 100 COPPER 1 && result 07b P7 "Not set" 100 COPPER 2
result 08 P8 "Pass star" 100 COPPER 1 && result 08b P8 Pass 200 COPPER 2
result 09 P9 Pass 100 COPPER 1 && result 09b P9 Fail 200 COPPER 1 && patch job/09b.vres 60 ff
result 10 P10 Pass 100 COPPER 1 && patch job/10.vres 60 ff
result P12 P12 Fail 100 COPPER 1 && truncate -s 30 job/P12.vres
result 13 $'no\nbreak' Fail 100 COPPER 1
t veltra job status -q job
t veltra job init job
t veltra job init job
t veltra job status -q job
t veltra job status -q job --count all -f csv
t veltra job status job -q -f json > status.json
sed -n '/"all"/,/}/p; /"finished"/p; /"notes"/,/\]/p' status.json
grep -A33 '"id": "P2"' status.json | grep -E 'counts|replacedBy|state|status'
for range in P1..P12 P1..P999999999999 P01..P100 P9..P12 A1..B12 P1..P1 .. "" -..-; do t veltra job status job --expect "$range"; done
t veltra job status -q job/01.vres job/02b.vres --job job/job.json --spreadsheet
t veltra job status -q job/01.vres job/02.vres job/02b.vres --expect P1 --expect P2
# A bad description: the file, the member, what was expected and what was found.
for bad in '{"expected": "A1..A2"}' '{"expected": ["A1..A2", 7]}' '{"expected": ["A1..A2", "A2..A1"]}' '{"tilte": "x"}' \
  '{"guessed": 1}' '[]' '{"expected": ["A1..A2"]' '{"title": "a", "title": "b"}' '{"title": "\ud800\u0041"}' '{"title": "\udc00 \ud83d\udd0c"}' '{"expected": []}'; do
  printf '%s' "$bad" > bad.json
  t veltra job status job --job bad.json
done
t veltra job status job --job nowhere.json
mkdir other && cp job/job.json other && t veltra job status job other ./job/../job
t veltra job init nowhere
# Of the same time the later name counts, as people count; a file whose summary tells an ID stands for no other.
mkdir tie && cp job/06.vres "tie/P (9).vres" && cp job/06b.vres "tie/P (10).vres" && cp job/09.vres tie/P7.vres
patch tie/P7.vres $(($(stat -c %s tie/P7.vres) - 1)) ff && printf '%.0s[' {1..1200} > deep.json
t veltra job status -q tie tie/../tie --expect P6 --expect P7 --expect P9
t veltra job status tie --job deep.json
t veltra job status -q tie --expect P6 --max-size 10; t veltra job status nowhere; t veltra job status job/01.vres
t veltra job status -q tie/P* --count all -f jsonl --expect P6
# Guesses: one length, from 9 to 10, gaps, what cannot be counted, and what cannot be said.
mkdir many
n=0
for id in 7 8 10 12 D1 D26 D53 D107 D215 D431 R-099 R-100 R-1000 x001y x003y A-1 A-30 A-99 solo "a..b" ""; do
  result "../many/$((++n))" "$id" Pass 100 COPPER 1
done
t veltra job init many
t cat many/job.json
# Rows that are chosen and sorted.
value() { # FILE ID HEADROOM STATUS
  printf '{"summary": {"resultName": "%s", "headroom": "%s", "status": "%s", "resultType": "COPPER", "timeStamp": %s},
    "sections": []}' "$2" "$3" "$4" "$1" | veltra pack - -o "rows/$1.vres" > /dev/null
}
mkdir rows
value 1 A1 3.10 Pass && value 2 A2 -inf Fail && value 3 A10 N/A "Pass star" && value 4 A9 --- "Fail star"
value 5 A3 "< 3.1" Pass && value 6 A4 "> 3.1" "Pass acceptable" && value 0 A5 -2 "Not set"
t veltra summary -r rows --sort headroom --columns id,headroom,time
t veltra summary -r rows --sort -headroom --columns headroom,id -f csv
t veltra summary -r rows --sort status,-id --columns id --columns status -f jsonl
t veltra summary -r rows --failed --unsorted --columns id
t veltra summary -r rows --sort -time --limit 2 --columns id,time
t veltra summary -r rows --sort color
t veltra summary -r rows --sort id --unsorted
