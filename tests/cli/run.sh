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

# header_crc FILE OFFSET: makes the CRC of the section header at OFFSET right again. gzip ends in the CRC-32, little-endian.
header_crc() {
  local crc
  crc=$(tail -c +$(($2 + 1)) "$1" | head -c 16 | gzip -c | tail -c 8 | head -c 4 | od -An -tx1 | tr -d ' ')
  patch "$1" $(($2 + 16)) "${crc:6:2}${crc:4:2}${crc:2:2}${crc:0:2}"
}

. "$script" > .printed 2>&1
if [[ -n ${UPDATE_GOLDEN:-} ]]; then cp .printed "$expected"; fi
diff -u -- "$expected" .printed && echo "as expected"
