# The examples of the man pages give what they show.
examples=$data/../../tools/veltra/examples
mkdir job stick
for i in {1..40}; do printf 'trace sample %03d\n' "$i"; done > trace.bin
result() { # ID STATUS LENGTH HEADROOM TIME
  cat << JSON
{
  "summary": {"resultName": "$1", "resultType": "COPPER", "status": "$2", "length": "$3", "headroom": "$4",
              "timeStamp": "2026-03-11T10:$5:00Z"},
  "sections": [{"type": 302, "version": 1, "payload": "trace.bin", "compress": true},
               {"type": 301, "version": 3, "payload": "trace.bin"}]
}
JSON
}
packed() { result "${@:2}" | veltra pack - -o "$1" > /dev/null; }
packed job/A-01.vres A-01 Pass 42.5 6.12 20
packed job/A-02.vres A-02 Fail 96.25 -1.30 22
packed job/A-03.vres A-03 "Pass star" 88.0 0.08 25
packed job/A-10.vres A-10 Pass 7.0 9.50 31
packed stick/A-05.vres A-05 Pass 42.5 6.12 27
packed stick/A-06.vres A-06 Pass 42.5 6.12 29
mkdir later && cp job/A-01.vres job/A-03.vres later && packed later/A-02.vres A-02 Pass 96.25 0.40 50
packed later/A-04.vres A-04 Pass 61.5 5.20 55
patch stick/A-05.vres 130 ff
never_closed stick/A-06.vres
result A-07 Pass 31.0 4.75 40 > result.json
printf 'A-08\n' > used.txt
printf 'correct horse battery\n' > passphrase.txt
cp "$data/cli/office_package.json" package.json

# replayed FILE: the transcript with what its command lines print now; what a line showed ends at an empty line.
replayed() {
  local line shown=
  while IFS= read -r line; do
    case $line in
      '$ '*) printf '%s\n' "$line"; shown=1; eval "${line#'$ '}" 2>&1 ;;
      '') printf '\n'; shown= ;;
      *) [[ $shown ]] || printf '%s\n' "$line" ;;
    esac
  done < "$1"
}
for file in "$examples"/*.txt; do
  name=$(basename -- "$file")
  replayed "$file" > "$name.now" < /dev/null
  [[ -z ${UPDATE_GOLDEN:-} ]] || cp "$name.now" "$file"
  diff -u "$file" "$name.now" && echo "$name"
done
