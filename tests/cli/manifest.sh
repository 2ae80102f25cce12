# Database packages: from a description and back, the same bytes as the C and Python clients write, and refusals.
cp "$data/cli/package.json" .
t veltra manifest new package.json -o p.pkg
cp "$data/good/limit_package.bin" limit_package.bin
t cmp p.pkg limit_package.bin
t veltra manifest new package.json -o p.pkg
t veltra manifest show p.pkg
t veltra manifest show p.pkg -f jsonl
veltra manifest show p.pkg -f jsonl | veltra manifest new - -o again.pkg
t cmp p.pkg again.pkg
t veltra manifest new package.json -o c.pkg --cable
t veltra info c.pkg
cp p.pkg bad.pkg && patch bad.pkg 60 ff && t veltra manifest show bad.pkg
t veltra manifest show package.json
t veltra manifest new package.json -o no/such/directory/p.pkg
echo mine > fresh.pkg.new
t veltra manifest new package.json -o fresh.pkg
t cat fresh.pkg.new
# What a file may be read by stays as it was; a new one gets what the umask leaves.
chmod 600 fresh.pkg
veltra manifest new package.json -o fresh.pkg --force
(umask 027; veltra extract p.pkg -s 1 -o first.bin)
t stat -c %a fresh.pkg first.bin

refuse() { printf '%s' "$1" > bad.json; t veltra manifest new bad.json -o never.pkg; }
refuse '{"version": "3.12"}'
refuse '{"version": "V3.12", "databases": []}'
refuse '{"version": "V3.12", "databases": [{"version": [1, 2, 3, 70000], "path": "x"}]}'
refuse '{"version": "V3.12", "databases": [{"version": [1, 2, 3, 4]}]}'
refuse '{"version": "V3.12", "databases": [{"path": "x", "patch": 1}]}'
refuse "{\"version\": \"V3.12\", \"databases\": [$(printf '{"path": "x"},%.0s' {1..50}){\"path\": \"x\"}]}"
t ls never.pkg
# A description of 16 MiB is read, and not a byte more.
{ cat package.json; head -c 16777216 /dev/zero | tr '\0' ' '; } | head -c 16777216 > full.json
t veltra manifest new full.json -o full.pkg
echo >> full.json
t veltra manifest new full.json -o never.pkg
cp p.pkg after.pkg && echo more >> after.pkg && t veltra manifest show after.pkg -f csv
