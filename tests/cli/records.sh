# Every record that show knows, from a bare file and from a section.
for record in "$data"/good/{equipment_information_v1,equipment_information_v3,folder_metadata_list_v1,instrument_settings_v1,orbel_settings_v0,\
database_version_v1,database_package_manifest_summary_v1,database_descriptor_list_v1,database_package_manifest_v1,\
otdr_span_v1}.bin; do
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
# A path without its terminating zero, where the library would stop.
cp "$data/good/database_descriptor_list_v1.bin" open.bin
at=$(grep -abo '[.]sql' open.bin | head -n 1 | cut -d: -f1)
patch open.bin $((at + 4)) 78 && t veltra show --record open.bin
: > empty.bin
t veltra show --record empty.bin
t veltra show --record - -f jsonl
