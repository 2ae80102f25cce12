#!/usr/bin/env bash
# run.sh VELTRA SCRIPT: runs a script of command lines in an empty directory and compares what they print with the file
# SCRIPT.expected beside it. UPDATE_GOLDEN=1 rewrites that file.
set -u
veltra=$(realpath -- "$1")
script=$(realpath -- "$2")
expected=${script%.sh}.expected
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT
cd "$scratch" || exit 1
export TZ=UTC LC_ALL=C.UTF-8
data=$(dirname -- "$script")/../data

veltra() { "$veltra" "$@"; }

# t COMMAND...: the command line, what it prints, what it complains of (marked with "!"), its exit code.
t() {
  printf '$ %s\n' "$*"
  local code=0
  "$@" < "${input:-/dev/null}" 2> .stderr || code=$?
  sed 's/^/! /' .stderr
  printf '= %d\n\n' "$code"
}

# patch FILE OFFSET HEX: overwrites bytes.
patch() { printf '%b' "$(sed 's/../\\x&/g' <<< "$3")" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none; }

# crc FILE OFFSET SIZE: the CRC-32 of these bytes. gzip ends in it, little-endian.
crc() { tail -c +$(($2 + 1)) "$1" | head -c "$3" | gzip -c | tail -c 8 | od -An -tx1 -N4 | awk '{ print $4 $3 $2 $1 }'; }

# header_crc FILE OFFSET, data_crc FILE OFFSET SIZE: make the CRCs of the section at OFFSET right again.
header_crc() { patch "$1" $(($2 + 16)) "$(crc "$1" "$2" 16)"; }
data_crc() { patch "$1" $(($2 + 12)) "$(crc "$1" $(($2 + 20)) "$3")" && header_crc "$1" "$2"; }

# never_closed FILE: as left by a writer that never closed it: total 20 after a CRC over 0, as its header says.
never_closed() { patch "$1" 12 2144df1c && patch "$1" 16 58c7e4e3 && patch "$1" 20 14000000; }

. "$script" > .printed 2>&1
if [[ -n ${UPDATE_GOLDEN:-} ]]; then cp .printed "$expected"; fi
diff -u -- "$expected" .printed && echo "as expected"
