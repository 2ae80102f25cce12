# What can be saved of damaged files is saved.
printf 'trace data\n%.0s' {1..50} > trace.bin
printf 'plot data\n%.0s' {1..20} > plot.bin
veltra pack "$data/cli/three_payloads.json" --payloads . -o whole.vres > /dev/null
for name in unclosed header-crc length-lies cut zeroed summary; do cp whole.vres "$name.vres"; done
never_closed unclosed.vres
patch header-crc.vres 30 ff
# A length that lies, with a header CRC to match, must not hide the sections after it.
patch length-lies.vres 104 0000ffff && header_crc length-lies.vres 96
truncate -s 400 cut.vres
dd if=/dev/zero of=zeroed.vres bs=1 count=40 conv=notrunc status=none
cat whole.vres whole.vres > spliced.vres
patch summary.vres 60 ff
(echo "junk before"; cat whole.vres) > shifted.vres
head -c 24 unclosed.vres > header-alone.vres
for name in header-crc length-lies cut zeroed summary spliced shifted header-alone; do
  t veltra recover $name.vres -o $name.new
  t veltra list $name.new
done
t veltra recover whole.vres -o whole.new
t cmp whole.vres whole.new
t veltra recover unclosed.vres -o whole.new
t veltra recover unclosed.vres -o whole.new --force
t cmp whole.vres whole.new
head -c 96 header-crc.vres > alone.vres
t veltra recover alone.vres -o alone.new
t veltra recover cut.vres -o cut2.new -f jsonl
t veltra recover cut.vres -o cut3.new -f csv
t veltra doctor summary.new
t veltra recover summary.new -o again.new
t veltra recover cut.vres -o ./cut.vres --force
t veltra recover -q cut.vres -o quiet.new
t veltra recover trace.bin -o none.new
t ls none.new
mkfifo pipe.new
t veltra recover cut.vres -o pipe.new --force

# What is written under the name "-" is a file; a closed standard input is none; a pipe without an end is not taken in.
t veltra recover cut.vres -o -
printf '{"summary": {}}' > summary.json
t veltra pack summary.json -o - --force
closed_input() { veltra "$@" <&-; }
t closed_input doctor -q -j 1 whole.vres -
endless() { yes | veltra pack - -o never.vres 2>&1 | sed -E 's/found 167[0-9]{5}|found 168[0-9]{5}/found little more/'; }
t endless

# A clean copy of a job: what is intact with its mode and time, what can be saved of the rest, and sums of all. The job
# stays as it is; made again, the copy does, too.
mkdir -p job/sub && cp whole.vres job/A1.vres && chmod 640 job/A1.vres && touch -d 2026-01-02T03:04:05.6Z job/A1.vres
cp header-crc.vres job/A2.vres && head -c 30 cut.vres > job/A3.vres && cp unclosed.vres job/sub
cp whole.vres $'job/sub/line\nbreak\\.vres' && cp whole.vres job/- && echo notes > job/notes.txt
echo '{"logo": "./logo.png"}' > job/job.json && echo picture > job/logo.png
ln -s job here && mkfifo job/fifo
stamps() { find "$@" -printf '%p %T@ %s %m\n' | sort; }
sums() { (cd "$1" && sha256sum -c SHA256SUMS); }
stamps job/* > before
t veltra recover -r job -o copy
t sums copy
t stat -c '%a %y' copy/A1.vres
stamps copy > first
t veltra recover -r ./here/ -o copy// -f csv
t cmp first <(stamps copy)
for new in job/new . here here/sub/new; do t veltra recover -q -r job -o $new; done
# What differs is replaced only on demand, links are not written through, and the list only grows.
echo changed > copy/A1.vres && ln -sf ../job/A1.vres copy/-
t veltra recover -q -r job -o copy
t veltra recover -q -r job -o copy --force
rm -r copy/sub && ln -s ../job/sub copy/sub && t veltra recover -j 1 -q -r job -o copy --force && rm copy/sub
cp whole.vres job/A5.vres && t veltra recover -q -r job -o copy
rm job/A5.vres && t veltra recover -q -r job -o copy
t cmp before <(stamps job/*)
# A file that cannot be written is named; nothing of it is left, and no list says that all is there.
mkdir large none && cp whole.vres large/A1.vres && cp whole.vres large/A3.vres && echo x > none/x
cat trace.bin trace.bin > twice.bin
echo '{"summary": {}, "sections": [{"type": 300, "version": 1, "payload": "twice.bin"}]}' > twice.json
veltra pack twice.json -o large/A2.vres > /dev/null
full() { (ulimit -f 1 && exec env --default-signal=XFSZ "$veltra" "$@"); }
t full recover -q -j 1 -r large -o full
t ls -A full
t veltra recover -r none -o none.copy
t ls none.copy
# There is no list of what is not whole, nor a copy where it could have none. What is left behind is named.
mkdir small lists && echo mine > lists/A2.vres && cp whole.vres small/A1.vres && ln -s ../job small/linked
t veltra recover -r small -o lists --max-size 100
t ls lists
t veltra recover -r small -o lists/// -f json
rm small/linked && echo '{"logo": "../plot.bin"}' > small/job.json
t veltra recover -r small -o lists
mkdir small/SHA256SUMS && t veltra recover -r small -o lists.new
rmdir small/SHA256SUMS && mkdir -p lists.new/SHA256SUMS && t veltra recover -r small -o lists.new --force
t ls lists.new
