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

# Secrets of project settings and of the network profile they hold are masked, also in a record that does not decode;
# files that differ in nothing else do differ.
settings() { # FILE USERPASS: a record of project settings, and a file with it
  local json='{"OrbelSettings": {"sync_userpass": "'$2'", "sync_username": "eve", "net_profile": {"WiFi SSID": "Site",
    "Wireless Security": {"Password": "'$2'", "Key": [null, "'$2'"], "Certificate Name": "ca"}}}}'
  local size=$((${#json} + 1))
  { head -c 8 "$data/good/orbel_settings_v0.bin"
    printf "$(printf '%08x%08x' $((size + 4)) $size | sed 's/../\\x&/g')"
    printf '%s\0' "$json"; } > "$1.bin"
  printf '%s' '{"summary": {}, "sections": [{"type": 910, "version": 1, "payload": "'"$1.bin"'"}]}' > "$1.json"
  veltra pack "$1.json" -o "$1.vres" > /dev/null
}
settings one 'hush \" 1' && settings two 'hush \" 2'
t veltra show one.vres -s 2
t veltra show one.vres -s 2 -f jsonl
t veltra show --record one.bin --reveal
t veltra diff one.vres two.vres
t veltra diff one.vres two.vres --reveal -f jsonl
head -c -3 one.bin > cut.bin
printf '%s' '{"summary": {}, "sections": [{"type": 910, "version": 1, "payload": "cut.bin"}]}' > cut.json
veltra pack cut.json -o cut.vres > /dev/null
every_screen() { # OPTION...
  for format in table json jsonl csv; do
    veltra show --record cut.bin -f $format "$@"
    for file in one cut; do
      veltra show $file.vres -s 2 -f $format "$@"
      veltra annotate $file.vres -f $format "$@"
    done
    veltra diff one.vres two.vres -f $format "$@"
  done 2>&1
}
every_screen > masked.txt; every_screen --reveal > revealed.txt
t grep -ciE 'hush|68 ?75 ?73 ?68' masked.txt revealed.txt

# Names of members that are not UTF-8 stay apart where JSON has to replace them.
LC_ALL=C sed 's/"WiFi SSID": "Site",/"n\xff": 1, "n\xfe": 2,   /' one.bin > names.bin
t veltra show --record names.bin -f jsonl
