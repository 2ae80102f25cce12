#!/bin/bash
# make-job.sh VELTRA DIRECTORY COUNT
# Packs COUNT varied results into a directory: copper and fibre, every verdict, bounds, values that are none, outliers,
# a name that is markup. The same arguments make the same files.
set -euo pipefail
veltra=$1
directory=$2
mkdir -p "$directory"

awk -v count="$3" -v directory="$directory" '
  function normal() { return rand() + rand() + rand() + rand() - 2 }
  function write(name, medium, status, length_, headroom, failed) {
    file = sprintf("%s/%05d.json", directory, i)
    printf "{\"summary\": {\"resultName\": \"%s\", \"resultType\": \"%s\", \"timeStamp\": %d, \"status\": \"%s\", " \
      "\"length\": \"%s\", \"headroom\": \"%s\", \"testFlags\": [1], \"numPassTests\": %d, \"numPassStarTests\": %d, " \
      "\"numFailTests\": %d}, \"sections\": []}\n", name, medium, 1706691600 + i * 310, status, length_, headroom,
      14 - failed, status == "Pass star", failed > file
    close(file)
  }
  BEGIN {
    srand(7)
    for (i = 1; i <= count; i++) {
      fibre = i % 10 >= 7
      metres = fibre ? 300 + 1800 * rand() : 12 + 80 * rand()
      headroom = sprintf("%.2f", fibre ? 1.6 + 0.8 * normal() - metres / 2500 : 2.9 - metres / 26 + 2 * normal()) + 0
      status = headroom < -0.2 ? "Fail" : headroom < 0 ? "Fail star" : headroom < 0.4 ? "Pass star" : "Pass"
      failed = headroom < 0 ? 1 + int(-2 * headroom) : 0
      name = sprintf(fibre ? "B%03d" : "A%03d", i % 1000)
      if (i == 12) write("<img src=x onerror=alert(1)>\\u0007 & \\u202eTAB", "COPPER", "Pass", "31.0", "2.20", 0)
      else if (i == 17) write(name, "COPPER", "Not set", "N/A", "NaN", 0)
      else if (i == 18) write(name, "FIBER", "Pass", ">1200.0", ">2.50", 0)
      else if (i == 22) write(name, "COPPER", "Fail", "64.1", "-48.00", 9)
      else if (i == 23) write(name, "COPPER", "Pass", "2000.0", "3.10", 0)
      else if (i == 25) write(name, "COPPER", "Pass acceptable", "44.0", "0.90", 0)
      else if (i == 29) write("A002", "COPPER", "Pass", "41.7", "3.80", 0)
      else if (i == 31) write("Drum 0418", "NOT_SET", "Show", ">150.0", "---", 0)
      else write(name, fibre ? "FIBER" : "COPPER", status, sprintf("%.1f", metres), headroom, failed)
    }
  }'
for description in "$directory"/*.json; do
  "$veltra" pack "$description" -o "${description%.json}.vres" > /dev/null
  rm "$description"
done
