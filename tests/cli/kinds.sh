# What file(1) and file managers say of a file is what info says; where not, the line after is file(1)'s.
share=$data/../../share
vectors=$data/../vectors
for name in "$vectors"/*.vres; do cp "$name" "$(basename "$name" .vres)"; done
"$data/../../examples/make_job" "$veltra" job 12 4 && cp job/A-001.vres copper-of-a-job
veltra manifest new "$data/cli/package.json" -o limits > /dev/null
veltra manifest new "$data/cli/package.json" -o cables --cable > /dev/null
veltra info -q -f jsonl $(ls -p | grep -vE '/|\.txt$') 2> /dev/null |
  sed -E 's/.*"file":"([^"]*)",("findings":\[\{"code":"E01")?.*"kind":"([^"]*)".*/\1: veltra \3\2/; s/veltra (damaged|empty) container/veltra container/; s/"find.*/, never closed/; s/veltra not a container/other/' > info.txt
file -m "$share/veltra.magic" $(ls -p | grep -vE '/|\.txt$') | sed -E 's/: +/: /; s/: ([^v]|very).*/: other/' > file.txt
t diff info.txt file.txt
cut -d: -f2 file.txt | sort | uniq -c
# The desktop's types by content, and by name where a file begins with nothing of its own.
mkdir -p mime/packages && cp "$share/veltra.xml" mime/packages && cp zeros zeros.vres
t xmllint --noout mime/packages/veltra.xml
export XDG_DATA_HOME=$PWD XDG_DATA_DIRS=$PWD
t update-mime-database mime
types() { gio info -a standard::content-type "$@" | sed -n 's/.*content-type: //p'; }
types $(ls -p | grep -vE '/|\.txt$') | sed -n 's/.*veltra/veltra/p' | sort | uniq -c
t types copper limits cables empty never-closed zeros.vres
magic() { file -m "$share/veltra.magic" "$@"; }
t magic -b --mime-type copper limits cables empty never-closed
