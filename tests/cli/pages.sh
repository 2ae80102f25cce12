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
veltra types -f csv | sed -nE 's/^section,([0-9]+),([^,]*),(version )?([^,]*)$/\1 \2 \4/p' | sed -E 's/  / - /; s/ $/ -/' > types.txt
sed -nE 's/^\| ([0-9]+) \| ([^ ]+) \| ([^ ]+) \|$/\1 \2 \3/p' "$pages/docs/section-types.md" > page.txt
t diff page.txt types.txt
t grep -c . types.txt
