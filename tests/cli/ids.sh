# Cable IDs: counting, listing, looking up, handing out; and every rule that refuses a pair.
t veltra ids A001 C120
t veltra ids A001 C120 -f json
t veltra ids A5 C7 --list
t veltra ids A001 C120 --list --from 119 --count 2 -f jsonl
t veltra ids A5 C7 --list --from 9 -f csv
t veltra ids A5 C7 --list --from 9 -f jsonl
t veltra ids A001 C120 --ordinal B001
t veltra ids A5 C7 --ordinal B9
t veltra ids A001 C120 --id 359 -f jsonl
t veltra ids A001 C120 --id 360
t veltra ids A5 C7 --check A5 B9 C7
t veltra ids A5 C7 --check A5 C7 -f jsonl
printf '%s\n' A001 A003 Z9 A003 > used.txt
t veltra ids A001 A005 --take 2 --used used.txt
input=used.txt t veltra ids A001 A005 --take 4 --used - -f json
t veltra ids A001 A002 --take 2
printf 'A001\r\nA002\r\n' > windows.txt
t veltra -q ids A001 A005 --take 1 --used windows.txt
t veltra -q ids A001 A005 --take 1 --used used.txt
t veltra ids -- -- --
t veltra ids A1 A10
t veltra ids a1 B1
t veltra ids C1 A1
t veltra ids A12 A11
t veltra ids A1 AB
t veltra ids A19 A1-
t veltra ids A-1 A_2
t veltra ids AA000 ZZ999
t veltra ids A01 A01
t veltra ids A001 C120 --list --id 3
t veltra ids A001 C120 --from 3
