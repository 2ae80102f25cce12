# Every record that show knows, from a bare file and from a section.
for record in "$data"/good/{equipment_information_v{1,2,3},folder_metadata_list_v1,instrument_settings_v{1,2},orbel_settings_v0,\
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
payload() { # NAME TYPE: a result with NAME.bin
  printf '%s' '{"summary": {}, "sections": [{"type": '"$2"', "version": 1, "payload": "'"$1.bin"'"}]}' > "$1.json"
  veltra pack "$1.json" -o "$1.vres" --force > /dev/null
}
settings() { # NAME JSON: a record of project settings, and a file with it
  local size=$((${#2} + 1))
  { head -c 8 "$data/good/orbel_settings_v0.bin"
    printf "$(printf '%08x%08x' $((size + 4)) $size | sed 's/../\\x&/g')"
    printf '%s\0' "$2"; } > "$1.bin"
  payload "$1" 910
}
of_eve() { # USERPASS
  printf '%s' '{"OrbelSettings": {"sync_userpass": "'"$1"'", "sync_username": "eve", "net_profile": {"WiFi SSID": "Site",
    "Wireless Security": {"Password": "'"$1"'", "Key": [null, "'"$1"'"], "Certificate Name": "ca"}}}}'
}
settings one "$(of_eve 'hush \" 1')" && settings two "$(of_eve 'hush \" 2')"
t veltra show one.vres -s 2
t veltra show one.vres -s 2 -f jsonl
t veltra show --record one.bin --reveal
t veltra diff one.vres two.vres
t veltra diff one.vres two.vres --reveal -f jsonl
# Nor are they shown of a damaged record, of one that is not recognised, of text that names them twice or in a comment, of
# a profile that is plain text, or of a JSON document.
head -c -3 one.bin > cut.bin && payload cut 910
cp one.bin unknown.bin && patch unknown.bin 0 00 && payload unknown 300
settings twice '{"OrbelSettings": {"sync_userpass": "hush", "sync_userpass": ""}}'
settings comment '{"OrbelSettings": {/* "sync_userpass": "hush" */}}'
settings plain '{"OrbelSettings": {"net_profile": "hush"}}'
settings text '{"OrbelSettings": {"project_id": "{\"Password\": \"hush\"}"}}'
# Nor of what follows the text, of names within a secret and documents in names and texts, however they are written.
settings after '{"OrbelSettings": {"sync_userpass": "x"}} hush'
settings zero '{"OrbelSettings": {"sync_userpass": "x"}}@hush' && sed -i 's/@hush/\x00hush/' zero.bin && payload zero 910
settings inner '{"OrbelSettings": {"net_profile": {"Wireless Security": {"Password": {"hush": 1}, "Key": {"hush": ["a"]}}}}}'
settings name '{"OrbelSettings": {"net_profile": {"{\"Password\":\"hush\"}": 1, "********": 2}}}'
settings coded '{"OrbelSettings": {"sync_userpass": "hush", "sync\u005fuserpass": "x"}}'
settings deeper '{"OrbelSettings": {"net_profile": {"x": "{\"y\":\"{\\\"Pass\\u005cu0077ord\\\"\\n:\\\"hush\\\"}\"}"}}}'
settings list '{"OrbelSettings": {"net_profile": ["hush"], "project_id": "{\"net_profile\": \"hush\"}"}}'
printf '%s' '{"sync\u005fuserpass": "hush"}' > coded2.bin && payload coded2 300
odd='after zero inner name coded deeper list coded2'
printf '%s' '{"sync_userpass": ["hush"], "x": "{\"Key\" : \"hush\"}"}' > document.bin && payload document 910
every_screen() { # OPTION...
  for format in table json jsonl csv; do
    veltra show --record cut.bin -f $format "$@"
    for file in one cut unknown twice comment plain text document $odd; do
      veltra show $file.vres -s 2 -f $format "$@"
      veltra annotate $file.vres -f $format "$@"
      veltra diff $file.vres two.vres -f $format "$@"
    done
  done 2>&1
}
every_screen > masked.txt; every_screen --reveal > revealed.txt
t grep -ciE 'hush|68 ?75 ?73 ?68' masked.txt revealed.txt
t veltra show name.vres -s 2 -f jsonl
t veltra diff name.vres inner.vres

# Doctor decodes a MiB of the records in a small file, and says once that it leaves the others.
settings wide "{\"OrbelSettings\": {\"net_profile\": [1$(printf ',1%.0s' {1..130000})]}}"
row='{"type": 910, "version": 1, "payload": "wide.bin", "compress": true}'
echo '{"summary": {}, "sections": ['"$row, $row, $row, $row, $row, $row, $row"']}' > wide.json
veltra pack wide.json -o wide.vres --force > /dev/null
t veltra doctor wide.vres
t veltra doctor wide.vres --deep

# Names of members that are not UTF-8 stay apart where JSON has to replace them.
LC_ALL=C sed 's/"WiFi SSID": "Site",/"n\xff": 1, "n\xfe": 2,   /' one.bin > names.bin
t veltra show --record names.bin -f jsonl
# JSON in the types that hold it, and images in any, are shown as what they are, everything else as bytes.
json() { printf '%b' "$2" > "$1.bin" && payload "$1" 920; } # NAME TEXT
json values '{"limit": {"name": "Cat 6A \\u2605", "points": [1, 2.5, 0.1234567890123]}, "ID": "a"}\n\0'
json spaced '{"ID":"a","limit":{"points":[1,2.5,0.1234567890123],"name":"Cat 6A \\u2605"}}'
json others '{"limit": {"name": "Cat 6", "points": [1, 2.5, 0.12345678901234, null]}, "ID": "b"}'
t veltra show values.vres -s 2
t veltra show values.vres -s 2 -f jsonl
t veltra diff values.vres spaced.vres
t veltra diff values.vres others.vres
json list '[{"a": 1}, []]' && t veltra show list.vres -s 2
# What is empty is a value, and what looks alike but is not is told apart.
json empty '{"a": {}, "b": "1", "c": "-", "d": {}}' && json filled '{"a": [], "b": 1, "d": null}'
t veltra show empty.vres -s 2
json none '{}' && t veltra show none.vres -s 2
t veltra diff empty.vres filled.vres
# One wide cell does not fill up the others.
json wide "[\"$(printf 'w%.0s' {1..9000})\"]" && t veltra diff wide.vres list.vres | awk '{ print length($0) }'
json rest '[1] [2]' && t veltra show rest.vres -s 2
json bytes '["\xff"]' && t veltra show bytes.vres -s 2
json digits '[1.10, {"a": 100000000000000000001}, 1e2]' && t veltra show digits.vres -s 2
json number '17' && t veltra show number.vres -s 2
json deep "$(printf '[%.0s' {1..5000})" && t veltra show deep.vres -s 2 | head -n 2
{ printf '%s' '{"relation":"=","value":16,"text":"0x10"}' > forged.bin; payload forged 920; t veltra show forged.vres -s 2 -f jsonl; }
image() { printf '%b' "$2" > "$1.bin" && payload "$1" 326 && t veltra show "$1.vres" -s 2 "${@:3}"; } # NAME BYTES OPTION...
image png '\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x02\x80\0\0\x01\xe0'
image png2 '\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x02\x80\0\0\x01\xe1' -f jsonl
t veltra diff png.vres png2.vres
image pgm 'P5 # made by hand\n640\n480 255\n\0'
image jpeg '\xff\xd8\xff\xe0\0\x04ab\xff\xff\xc2\0\x0b\x08\x01\xe0\x02\x80\x03'
# Cut, without pixels, and with a number that is none: no images.
image none '\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x02\x80\0\0\x01'
image none '\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\0\0\0\x01\xe0'
image none 'P5 99999999999 1 255 '
image none '\xff\xd8\xff\xe0\0\x00ab\xff\xc0\0\x0b\x08\x01\xe0\x02\x80'
# A document that looks like a measurement is shown as it is.
json like '{"a": {"relation": ">", "value": 16, "text": "many"}}' && t veltra show like.vres -s 2
