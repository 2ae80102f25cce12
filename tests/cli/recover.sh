# What can be saved of damaged files is saved.
printf 'trace data\n%.0s' {1..50} > trace.bin
printf 'plot data\n%.0s' {1..20} > plot.bin
printf '%s' '{"summary": {"resultName": "B-1", "resultType": "FIBER", "status": "Fail", "length": "12.5"},
 "sections": [{"type": 300, "version": 12, "payload": "trace.bin", "compress": true},
              {"type": 301, "version": 3, "payload": "trace.bin"},
              {"type": 4711, "version": 9, "payload": "plot.bin"}]}' > result.json
veltra pack result.json -o whole.vres > /dev/null
damaged() { cp whole.vres "$1.vres"; }
saved() { t veltra recover "$1.vres" -o "$1.new" && t veltra list "$1.new"; }

t veltra recover whole.vres -o whole.new
t cmp whole.vres whole.new
t veltra recover whole.vres -o whole.new
damaged unclosed && patch unclosed.vres 12 2144df1c && patch unclosed.vres 16 58c7e4e3 && patch unclosed.vres 20 14000000 &&
  t veltra recover unclosed.vres -o unclosed.new --force && t cmp whole.vres unclosed.new
damaged header-crc && patch header-crc.vres 30 ff && saved header-crc
damaged data-crc && patch data-crc.vres 120 ff && saved data-crc
# A length that lies, with a header CRC to match, must not hide the sections behind it.
damaged length-lies && patch length-lies.vres 104 0000ffff && header_crc length-lies.vres 96 && saved length-lies
damaged cut-at-section && truncate -s 145 cut-at-section.vres && saved cut-at-section
damaged cut && truncate -s 400 cut.vres && saved cut
damaged zeroed && dd if=/dev/zero of=zeroed.vres bs=1 count=40 conv=notrunc status=none && saved zeroed
cat whole.vres whole.vres > spliced.vres && saved spliced
(echo "junk before"; cat whole.vres) > shifted.vres && saved shifted
t veltra recover cut.vres -o cut2.new -f jsonl
cp cut.vres alone.vres
t veltra recover alone.vres -o ./alone.vres --force
t cmp cut.vres alone.vres
t veltra recover -q alone.vres -o quiet.new
head -c 24 unclosed.vres > header-alone.vres && saved header-alone
t veltra recover trace.bin -o none.new
t ls none.new
