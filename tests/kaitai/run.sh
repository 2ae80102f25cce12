#!/bin/bash
# run.sh
# Compiles docs/veltra.ksy and reads with it what the library's own tests read: every vector, and every record whole, cut
# and damaged. Compares it with the tables of docs/format.md.
set -euo pipefail
. "$(dirname -- "$0")/../../scripts/lib.sh"

modules=$root/build/kaitai
command -v npm > /dev/null || install_packages browse
[[ -d $modules/node_modules/kaitai-struct-compiler && -d $modules/node_modules/kaitai-struct && -d $modules/node_modules/yaml ]] ||
  quietly npm install --silent --no-save --no-audit --no-fund --ignore-scripts --prefix "$modules" \
    kaitai-struct-compiler@0.11.0 kaitai-struct@0.11.0 yaml@2.8.2
node "${0%/*}/check.mjs" "$modules" "$root"
python3 -m py_compile "$modules/veltra.py"
