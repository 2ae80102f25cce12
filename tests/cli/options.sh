# The options of every command: what is painted, what is left out, the bar on a terminal, and what shells complete.
printf '%s' '{"summary": {"resultName": "B-1", "status": "Fail", "length": "12.5"}, "sections": []}' > result.json
mkdir lot
veltra pack result.json -o lot/whole.vres > /dev/null
cp lot/whole.vres lot/damaged.vres && patch lot/damaged.vres 60 ff
visible() { sed 's/\x1b/ESC/g; s/\r/CR/g'; }
# terminal COMMAND-LINE: on a terminal of its own.
terminal() { TERM=xterm script -qefc "$*" /dev/null < /dev/null | visible; }

t veltra info --color sometimes lot/whole.vres
always() { veltra "$@" --color always 2>&1 | visible; }
t always summary -r lot
echo "on a terminal:" && terminal "'$veltra' doctor lot/damaged.vres"
echo "not asked for:" && terminal "NO_COLOR=1 '$veltra' doctor lot/damaged.vres"
echo "not asked for either:" && terminal "'$veltra' doctor lot/damaged.vres --color never"

# On a terminal a line sums up, also where nothing is wrong; nowhere else.
for line in "summary -q -r lot" "doctor lot/whole.vres" "types otdr_span"; do terminal "NO_COLOR=1 '$veltra' $line"; done

# CSV is exact for programs, harmless on a terminal, and made for people where they ask for it.
mkdir odd
described() { veltra pack - -o "$1" > /dev/null; }
described $'odd/\u200f\u061c\u2028\n\e.vres' <<< '{"summary": {"resultName": "=cmd|x", "length": "-1.30"}, "sections": []}'
described odd/at.vres <<< '{"summary": {"resultName": "@\t,\"", "headroom": "<2.5"}, "sections": []}'
seen() { veltra "$@" | cat -v; }
t seen summary -r odd -f csv
terminal "'$veltra' summary -r odd -f csv"
t seen summary -r odd --spreadsheet
t seen list odd/at.vres --spreadsheet -f csv
t veltra summary -r odd --spreadsheet -f json
t seen summary odd/at.vres lot/whole.vres --unsorted -f csv
t seen summary odd/at.vres lot/whole.vres --unsorted -f jsonl
t veltra summary -r odd --unsorted --expect A1..A2

# Names that begin with a dash: after --, and with a hint where it was forgotten.
cp odd/at.vres ./-x.vres && patch ./-x.vres 60 ff
t veltra info -x.vres
t veltra info odd/at.vres -x.vres
t veltra info -z
touch ./-ü && LC_ALL=C t veltra info -ü
t veltra doctor -f csv -- -x.vres
t veltra recover -o -y.vres -- -x.vres
t veltra ids --list -- -A1 -A2

truncate -s 2M lot/large
t veltra doctor -r lot --max-size 1M
t veltra doctor -q -r lot --max-size 1M
t veltra show --max-size 95 lot/whole.vres
input=lot/whole.vres t veltra info - --max-size 96

# Files that come more than a second after the command has opened the first: the bar stands while work goes on, only its
# end clears it, and it is gone from the line before anything is printed. The command begins to count when it starts,
# before it opens anything.
mkdir lots && mkfifo slow late && for i in {1..40}; do cp lot/whole.vres lots/$i.vres; done
lasting() { # OPTION...
  cat <<END
exec 8<> late 9<> slow
'$veltra' doctor -j 1 slow lots/*.vres late --color never $* 8<&- 9<&- &
is_open() { ls -l /proc/\$!/fd 2> /dev/null | grep -v ' [89] ->' | grep -q \$1; }
until is_open slow || ! kill -0 \$!; do sleep 0.01; done
sleep 1.1
cat lot/whole.vres >&9
exec 9<&-
until is_open late || ! kill -0 \$!; do sleep 0.01; done
sleep 0.2
cat lot/whole.vres >&8
exec 8<&-
wait
END
}
terminal "$(lasting)" > lasting.txt
echo "bar:" && grep -oE '\[#+ *\] +[0-9]+ %|CRESC\[K' lasting.txt | tail -n 2
echo "what it says:" && grep -oE '[0-9]+/42 files, [0-9.]+/[0-9.]+ kB, [0-9.]+ k?B/s, [0-9]:[0-9]{2} left' lasting.txt | sed -E 's/, [0-9].*//' | tail -n 1
echo "times cleared: $(grep -o 'CRESC\[K' lasting.txt | wc -l)"
echo "no bar:" && terminal "$(lasting --progress never)"
echo "on a dumb terminal:" && terminal "export TERM=dumb; $(lasting)"
for columns in 50 24 10; do
  terminal "stty cols $columns; $(lasting)" | grep -oE 'CR[^C]*[0-9] left' | sed -E 's/[0-9]+/N/g; s/^CR *//' | tail -n 1
done
echo "no bytes on it:" && terminal "'$veltra' extract lot/whole.vres -s 1"

# A FIFO that nobody writes to is named and not waited for; one with a writer is read, and so is process substitution.
mkfifo nobody
timely() { timeout 20 "$veltra" "$@"; }
t timely info nobody lot/whole.vres -f csv
printf '%s' '{"summary": {}, "sections": [{"type": 302, "version": 1, "payload": "nobody"}]}' > nobody.json
t timely pack nobody.json -o lot/new.vres
for writer in 'cat lot/whole.vres' 'sleep 0.1; cat lot/whole.vres' true; do
  timely info -q <(eval "$writer") -f jsonl | grep -o '"kind":"[^"]*"'
done

# A signal that ends it leaves nothing unfinished behind: here while the payload is waited for.
printf '%s' '{"summary": {"resultName": "B-2"}, "sections": [{"type": 302, "version": 1, "payload": "waits"}]}' > waits.json
mkfifo waits
exec 9<> waits
interrupted() { # SIGNAL
  env --default-signal="$1" "$veltra" pack waits.json -o lot/new.vres 9<&- &
  until compgen -G 'lot/new.vres.*' > /dev/null || ! kill -0 $! 2> /dev/null; do sleep 0.01; done
  kill -"$1" $!
  { wait $!; } 2> /dev/null
}
for signal in INT TERM HUP PIPE; do t interrupted $signal; done
printf 'x%.0s' {1..3000} > long.bin
printf '%s' '{"summary": {"resultName": "B-3"}, "sections": [{"type": 302, "version": 1, "payload": "long.bin"}]}' > long.json
too_long() { (ulimit -f 1; exec env --default-signal=XFSZ "$veltra" "$@" -o lot/new.vres); } # ARGUMENT...
t too_long pack long.json
veltra pack long.json -o long.vres > /dev/null && t too_long extract long.vres -s 2
t ls lot

veltra completion bash > completion.bash
complete_words() { # WORD...: what may stand for the last one
  bash -c '. ./completion.bash; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _veltra; echo "${COMPREPLY[*]}"' - "$@"
}
t complete_words veltra d
t complete_words veltra -r doctor --de
t complete_words veltra doctor -f j
t complete_words veltra doctor --format = j
t complete_words veltra doctor --format =
t complete_words veltra manifest ''
t complete_words veltra help d
t complete_words veltra manifest new --ca
t complete_words veltra recover x -o ''
t veltra completion fish
t veltra doctor a.vres --deep --quick
t veltra pack no-such-file -o b.vres
t always list lot/damaged.vres
