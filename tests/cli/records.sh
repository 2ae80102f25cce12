# Every record that show knows, from a bare file and from a section.
for record in "$data"/good/{equipment_information_v1,equipment_information_v3,folder_metadata_list_v1,otdr_span_v1}.bin; do
  cp "$record" record.bin
  t veltra show --record record.bin
done
printf '%s' '{"summary": {}, "sections": [{"type": "OTDR_SPAN", "version": 1, "payload": "record.bin", "compress": true}]}' > r.json
veltra pack r.json -o r.vres > /dev/null
t veltra show r.vres -s 2 -f jsonl
head -c 20 record.bin > cut.bin
t veltra show --record cut.bin
printf '\011' | dd of=record.bin bs=1 seek=17 conv=notrunc status=none
t veltra show --record record.bin
: > empty.bin
t veltra show --record empty.bin
t veltra show --record - -f jsonl
