# What can be saved of damaged files is saved.
printf 'trace data\n%.0s' {1..50} > trace.bin
printf 'plot data\n%.0s' {1..20} > plot.bin
veltra pack "$data/cli/three_payloads.json" --payloads . -o whole.vres > /dev/null
for name in unclosed header-crc length-lies cut zeroed summary; do cp whole.vres "$name.vres"; done
never_closed unclosed.vres
patch header-crc.vres 30 ff
# A length that lies, with a header CRC to match, must not hide the sections after it.
patch length-lies.vres 104 0000ffff && header_crc length-lies.vres 96
truncate -s 400 cut.vres
dd if=/dev/zero of=zeroed.vres bs=1 count=40 conv=notrunc status=none
cat whole.vres whole.vres > spliced.vres
patch summary.vres 60 ff
(echo "junk before"; cat whole.vres) > shifted.vres
head -c 24 unclosed.vres > header-alone.vres
for name in header-crc length-lies cut zeroed summary spliced shifted header-alone; do
  t veltra recover $name.vres -o $name.new
  t veltra list $name.new
done
t veltra recover whole.vres -o whole.new
t cmp whole.vres whole.new
t veltra recover unclosed.vres -o whole.new
t veltra recover unclosed.vres -o whole.new --force
t cmp whole.vres whole.new
head -c 96 header-crc.vres > alone.vres
t veltra recover alone.vres -o alone.new
t veltra recover cut.vres -o cut2.new -f jsonl
t veltra recover cut.vres -o cut3.new -f csv
t veltra doctor summary.new
t veltra recover summary.new -o again.new
t veltra recover cut.vres -o ./cut.vres --force
t veltra recover -q cut.vres -o quiet.new
t veltra recover trace.bin -o none.new
t ls none.new
mkfifo pipe.new
t veltra recover cut.vres -o pipe.new --force

# What is written under the name "-" is a file; a closed standard input is none; a pipe without an end is not taken in.
t veltra recover cut.vres -o -
printf '{"summary": {}}' > summary.json
t veltra pack summary.json -o - --force
closed_input() { veltra "$@" <&-; }
t closed_input doctor -q -j 1 whole.vres -
endless() { yes | veltra pack - -o never.vres 2>&1 | sed -E 's/found 167[0-9]{5}|found 168[0-9]{5}/found little more/'; }
t endless
