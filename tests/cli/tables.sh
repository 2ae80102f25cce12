# A job as a workbook and as a database: what they hold, and what becomes of files that are there.
result() { # FILE ID TYPE STATUS LENGTH HEADROOM TIME
  printf '{"summary": {"resultName": "%s", "resultType": "%s", "status": "%s", "length": "%s", "headroom": "%s",
    "timeStamp": "%s", "testFlags": [1], "numPassTests": 12}}' "${@:2}" | veltra pack - -o "$1" > /dev/null
}
day() { echo "2026-03-1$1:00Z"; }
mkdir -p job/again
echo '{"title": "Riverside", "expected": ["A-001..A-008", "F-01..F-04"]}' > job/job.json
result job/A-001.vres A-001 COPPER Pass 42.5 6.12 "$(day 1T10:20)"
result job/A-002.vres A-002 COPPER Fail 96.25 -1.30 "$(day 1T10:22)"
result job/again/A-002.vres A-002 COPPER Pass 88.0 0.40 "$(day 2T09:05)"
result job/A-003.vres A-003 COPPER 'Pass star' 88.5 0.08 "$(day 1T10:25)"
result job/A-004.vres A-004 COPPER Fail 91.0 -0.75 "$(day 1T10:31)"
result job/A-006.vres A-006 COPPER Pass 7.0 9.50 "$(day 1T10:40)"
cp job/A-006.vres job/again/A-006-copy.vres
result job/A-007.vres A-007 COPPER Pass 12.0 4.00 "$(day 1T10:44)" && patch job/A-007.vres 8 ff
result job/A-008.vres A-008 COPPER Pass 31.5 N/A "$(day 2T09:10)"
result job/F-01.vres F-01 FIBER Pass 1204 2.50 "$(day 3T14:00)" && printf more >> job/F-01.vres
result job/F-02.vres F-02 FIBER Pass '>2000' 1.75 "$(day 3T14:04)"
result job/F-03.vres F-03 FIBER Fail 1190 -inf "$(day 3T14:09)"
result job/X-1.vres X-1 COPPER Pass 5.0 8.20 "$(day 2T09:30)"

t veltra job status -q job -f sqlite -o job.db
t sqlite3 job.db 'PRAGMA integrity_check' 'PRAGMA foreign_key_check' 'PRAGMA user_version' .schema
# The page about these tables shows what its questions answer.
answered() { # PAGE
  local line sql= inside=
  while IFS= read -r line; do
    case $inside:$line in
      :'```sql') inside=sql sql= ;;
      sql:'```') inside=question ;;
      sql:*) sql+=$line$'\n' ;;
      question:'```text')
        printf '%s\n' "$line"
        sqlite3 -readonly -column -header job.db "$sql" | sed 's/ *$//'
        inside=answer
        continue ;;
      answer:'```') inside= ;;
      answer:*) continue ;;
    esac
    printf '%s\n' "$line"
  done < "$1"
}
page=$data/../../docs/many-results.md
answered "$page" > page.now
[[ -z ${UPDATE_GOLDEN:-} ]] || cp page.now "$page"
cp "$page" page.md
t diff page.md page.now
t grep -c '^```sql' page.now

sed -n '/^## The tables/,/^## Ten/s/^| \(`[^|]*`\) |.*/\1/p' "$page" | grep -o '[a-zA-Z]*' > documented.txt
sqlite3 job.db "SELECT c.name FROM sqlite_schema s JOIN pragma_table_info(s.name) c WHERE s.type = 'table'" > columns.txt
t diff documented.txt columns.txt

# cells WORKBOOK SHEET COLUMN...: the cells of columns with the kind of each: its type, else its number format; "!" if it
# is painted.
cells() {
  python3 - "$@" << 'PYTHON'
import sys, zipfile
from xml.etree import ElementTree
NS = {"m": "http://schemas.openxmlformats.org/spreadsheetml/2006/main"}
book = zipfile.ZipFile(sys.argv[1])
tree = lambda name: ElementTree.fromstring(book.read("xl/" + name))
styles = [(x.get("numFmtId"), x.get("fillId") != "0") for x in tree("styles.xml").find("m:cellXfs", NS)]
names = [s.get("name") for s in tree("workbook.xml").find("m:sheets", NS)]
sheet = tree("worksheets/sheet%d.xml" % (names.index(sys.argv[2]) + 1))
head = None
for row in sheet.iter("{%s}row" % NS["m"]):
    values = {}
    for c in row:
        text = "".join(x.text or "" for x in c.iter() if x.tag.endswith(("}t", "}v")))
        style, painted = styles[int(c.get("s", 0))]
        values[c.get("r").rstrip("0123456789")] = (c.get("t", style)[:1] + "!" * painted, text)
    head = head or {text: column for column, (_, text) in values.items()}
    print(" | ".join("%s %r" % values.get(head[name], ("-", "")) for name in sys.argv[3:]))
print(names, sheet.find(".//m:pane", NS).get("state"), sheet.find("m:autoFilter", NS).get("ref"))
PYTHON
}
t veltra job status -q job -f xlsx -o job/job.xlsx
t cells job/job.xlsx results id status 'length (m)' lengthRelation 'headroom (dB)' headroomRelation 'time (UTC)' damaged counts
t cells job/job.xlsx links id expected state status results testedAgain damagedFiles
t cells job/job.xlsx findings file code 'offset (bytes)' section damage leftOut

# What is not replaced: a file, one that is an input, the description. A workbook of last time is no file of the job.
t veltra job status -q job -f xlsx -o job/job.xlsx
t veltra job status -q job -f xlsx -o job/job.xlsx --force
t veltra job status -q job -f sqlite -o job/A-001.vres --force
t veltra job status -q job -f sqlite -o job/job.json --force
t veltra summary -q -r job -f sqlite -o job/again/A-002.vres --force
t veltra summary -q -r job -f xlsx -o nowhere/job.xlsx
t veltra summary -q -r job -f xlsx
t veltra summary -q -r job -o job.csv
t veltra summary -q -r job -f sqlite -o other.db --unsorted
t veltra summary -q -r job -f sqlite -o job/job.json --force
t veltra summary -q -r job -f sqlite -o other.db --failed --limit 3
t veltra summary -q -r job -f sqlite --spreadsheet -o other.db
t veltra doctor -q job/A-001.vres -f xlsx
t veltra job init job -f sqlite

# IDs stay texts, whatever they look like.
mkdir odd
described() { veltra pack - -o "$1" > /dev/null; }
odd=0
for id in '=HYPERLINK(\"http://x\")' '+1' 'a\nb\r' '_x0041_' '\u0001' '\uffff' ' b ' ''; do
  described odd/$((++odd)).vres <<< '{"summary": {"resultName": "'"$id"'", "timeStamp": "1900-02-28T23:59:59Z"}}'
done
described odd/time.vres <<< '{"summary": {"resultName": "time", "timeStamp": "1900-03-01T00:00:00Z"}}'
described odd/long.vres <<< '{"summary": {"resultName": "'"$(printf '%032760d' 0 | tr 0 x)"'😀😀😀😀"}}'
cp "$data"/../vectors/{name-not-utf8,name-breaks,infinite,not-available,scales,time-after-2038,sections-60}.vres odd
for at in 118 139 161 184 208 229 251; do patch odd/sections-60.vres $at ff; done
t veltra summary -q -r odd -f xlsx -o odd.xlsx
t veltra summary -q -r odd -f sqlite -o odd.db
cells odd.xlsx results id lengthRelation 'headroom (dB)' headroomRelation 'time (UTC)' | cut -c 1-100
cells odd.xlsx results id | grep -o 'x* ... (cut).*' | wc -c
t sqlite3 odd.db 'SELECT quote(substr(id, 1, 9)), hex(substr(CAST(id AS BLOB), 1, 9)), length(id), time FROM results'
t sqlite3 odd.db 'SELECT file, code, leftOut, text FROM findings'

# A file that cannot grow to its size is none, wherever writing ended; the old one stays.
whole() { # FILE
  case $1 in *.db) sqlite3 "$1" 'PRAGMA integrity_check' ;; *) cells "$1" results id > /dev/null && cells "$1" links id > /dev/null && echo ok ;; esac
}
for file in job.db job/job.xlsx; do
  cp "$file" old
  for blocks in 1 2 3 4 5 6 7 8 9 10 11 12 16 24 32 48 64; do
    cp old "$file"
    (ulimit -f $blocks && veltra job status -q job -f "$([[ $file = *.db ]] && echo sqlite || echo xlsx)" -o "$file" --force) > .out 2>&1
    code=$?
    if [[ $code = 4 ]]; then cmp "$file" old && sed 's/\.[0-9a-f]\{16\}//' .out; else whole "$file"; fi
  done | sort -u
done
t find . -name '*.tmp'
