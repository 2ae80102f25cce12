# Pages that show output or tables are as the command prints them.
pages=$data/../..
make_payloads=$(dirname -- "$veltra")/../examples/make_payloads
mkdir payloads && "$make_payloads" payloads > /dev/null
veltra pack "$pages/examples/results/otdr-pass.json" --payloads payloads -o otdr-pass.vres > /dev/null
{
  echo '$ veltra info otdr-pass.vres' && veltra info otdr-pass.vres && echo
  echo '$ veltra list otdr-pass.vres' && veltra list otdr-pass.vres
} > printed.txt
sed -n '/^\$ veltra info otdr-pass/,/^```/p' "$pages/README.md" | sed '$d' > readme.txt
t diff readme.txt printed.txt
"$pages/examples/make_job" "$veltra" job 12 4
sed -n '/^\$ veltra job status -q job/,/^```/p' "$pages/README.md" | sed '$d' > readme.txt
grep '^\$ ' readme.txt | while read -r _ line; do echo "\$ $line" && eval "$line"; echo; done | sed '$d' > printed.txt
t diff readme.txt printed.txt
veltra types -f csv | sed -nE 's/^section,([0-9]+),([^,]*),(version )?([^,]*)$/\1 \2 \4/p' | sed -E 's/  / - /; s/ $/ -/' > types.txt
sed -nE 's/^\| ([0-9]+) \| ([^ ]+) \| ([^ ]+) \|$/\1 \2 \3/p' "$pages/docs/section-types.md" > page.txt
t diff page.txt types.txt
t grep -c . types.txt
# Every command stands in the README, and has examples, without which it gets no man page.
veltra --help | sed -n '/^Commands:/,$s/^  \([a-z]*\) .*/\1/p' | sort > commands.txt
ls "$pages/tools/veltra/examples" | sed 's/[.]txt$//' > examples.txt
t diff examples.txt commands.txt
# Man pages describe it: what it does, in more than a line, what its codes mean, and where to go on.
for page in "$pages"/tools/veltra/pages/*.txt; do
  name=$(basename "$page" .txt)
  case $name in veltra) continue ;; esac
  veltra help $name | grep -qxF "$(head -n 1 "$page")" && grep -q '^0  ' "$page" && echo $name
  sed -n '/^See also:/,$p' "$page" | tail -n +2 | tr ' ' '\n' | grep -vxFf commands.txt
done > described.txt
t diff described.txt commands.txt
sed -n '/^## The veltra command/,/^Answers/s/^| \(`.*`\) |.*/\1/p' "$pages/README.md" | grep -o '[a-z]*' | sort > readme.txt
t diff readme.txt commands.txt
# Every finding stands on its page under its name, with a line that doctor prints.
veltra types -f csv | sed -n 's/^finding,[0-9]*,\(.*\),\(.*\)$/\1 \2/p' > findings.txt
sed -n 's/^## \([EW][0-9][0-9] .*\)/\1/p' "$pages/docs/findings.md" > page.txt
t diff page.txt findings.txt
sed -n 's/^    //p' "$pages/docs/findings.md" > examples.txt
cp "${script%pages.sh}doctor.expected" printed.txt
t grep -vxFf printed.txt examples.txt
sed 's/.*: \([EW][0-9][0-9] [^:]*\): expected.*/\1/' examples.txt > shown.txt
t diff shown.txt findings.txt
