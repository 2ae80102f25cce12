# Pack a result, look at it, and see every kind of refusal.
printf 'trace data\n%.0s' {1..500} > trace.bin
printf '\001\002\003' > plot.bin
cp "$data/cli/result.json" .
t veltra pack result.json -o a.vres
t veltra pack result.json -o a.vres
t veltra pack result.json -o a.vres --force --level 9 -f json
t veltra info a.vres
t veltra info -f jsonl a.vres
t veltra info -f csv a.vres plot.bin
t veltra summary a.vres
input=a.vres t veltra list -f jsonl -
t veltra show a.vres
t veltra -f jsonl show a.vres -s 1
t veltra show a.vres -s 3
t veltra show a.vres -s 3 -f json
t veltra show a.vres -s 4

# What is shown can be packed again, to the same bytes.
veltra show a.vres -f jsonl | sed -E 's/^.*"record":\{"ResultSummary":(.*)\},"schema".*$/{"summary":\1}/' > again.json
t veltra pack again.json -o again.vres
t cmp <(veltra show again.vres -f jsonl | sed 's/again.vres//') <(veltra show a.vres -f jsonl | sed 's/a.vres//')

# Descriptions that are refused.
: > empty.bin
while IFS= read -r description; do
  printf '%s' "$description" > bad.json
  t veltra pack bad.json -o never.vres
done < "$data/cli/refused_results.txt"
printf '{"summary": {}}\0junk' > bad.json && t veltra pack bad.json -o never.vres
t ls never.vres

# How it is called.
t veltra --version
t veltra frobnicate
t veltra docotr a.vres
t veltra manifest sho a.vres
t veltra help manifest show
t veltra help manifest sho
same_help() { cmp <(veltra help "$@") <(veltra "$@" --help); } # COMMAND...
t same_help
t same_help doctor
t veltra list -f yaml a.vres
t veltra info no-such-file a.vres
t veltra list .
help_on_full_disk() { veltra --help > /dev/full; }
t help_on_full_disk
full() { veltra "$@" > /dev/full; }
for line in "annotate a.vres" "types otdr"; do t full $line; done
for line in "" manifest "-x doctor a.vres"; do t veltra $line; done
t veltra help ""
