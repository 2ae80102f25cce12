# Cable IDs: counting, listing, looking up, handing out; and every rule that refuses a pair.
t veltra ids A001 C120 -f json
t veltra ids A5 C7 --list
t veltra ids A001 C120 --list --from 119 --count 2 -f jsonl
t veltra ids A5 C7 --list --from 9 -f csv
t veltra ids A001 C120 --ordinal B001
t veltra ids A5 C7 --ordinal B9
t veltra ids A001 C120 --id 359 -f jsonl
t veltra ids A001 C120 --id 360
t veltra ids A5 C7 --check A5 B9 C7
t veltra ids A5 C7 --check A5 C7 -f jsonl
printf '%s\n' A001 A003 Z9 A003 > used.txt
t veltra ids A001 A005 --take 2 --used used.txt
input=used.txt t veltra ids A001 A005 --take 4 --used - -f json
printf 'A001\r\nA002\r\n' > windows.txt
t veltra -q ids A001 A005 --take 1 --used windows.txt
t veltra ids -- -- --
for pair in 'A1 A10' 'a1 B1' 'C1 A1' 'A12 A11' 'A1 AB' 'A19 A1-' 'A-1 A_2' 'AA000 ZZ999' 'A01 A01'; do
  t veltra ids $pair
done
t veltra ids A001 C120 --list --id 3
t veltra ids A001 C120 --from 3
