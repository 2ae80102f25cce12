# What info, list and show say of damaged files.
printf 'trace data\n%.0s' {1..50} > trace.bin
printf '%s' '{"summary": {"resultName": "B-1", "resultType": "FIBER", "status": "Fail", "length": "12.5"},
 "sections": [{"type": 300, "version": 12, "payload": "trace.bin", "compress": true},
              {"type": 301, "version": 3, "payload": "trace.bin"}]}' > result.json
veltra pack result.json -o whole.vres > /dev/null
damaged() { cp whole.vres "$1.vres"; }

damaged cut-in-data && truncate -s 400 cut-in-data.vres && t veltra list cut-in-data.vres
damaged cut-at-section && truncate -s 145 cut-at-section.vres && t veltra info cut-at-section.vres
damaged cut-in-header && truncate -s 150 cut-in-header.vres && t veltra list cut-in-header.vres
damaged longer && echo "more" >> longer.vres && t veltra list longer.vres
damaged header-crc && patch header-crc.vres 30 ff && t veltra info header-crc.vres
damaged data-crc && patch data-crc.vres 60 ff && t veltra info data-crc.vres && t veltra show data-crc.vres
damaged magic && patch magic.vres 0 4747 && t veltra list magic.vres
damaged other-magic && patch other-magic.vres 24 4747 && header_crc other-magic.vres 24 && t veltra list other-magic.vres
damaged total && patch total.vres 20 00000000 && t veltra list total.vres
# As a writer leaves it that never closed: total 20 behind a CRC over 0, as its header says.
damaged unclosed && patch unclosed.vres 12 2144df1c && patch unclosed.vres 16 58c7e4e3 && patch unclosed.vres 20 14000000 &&
  t veltra info unclosed.vres
: > empty.vres && t veltra info empty.vres
echo "some text that is no container" > text.vres && t veltra list text.vres && t veltra show text.vres
