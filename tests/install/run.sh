#!/bin/bash
# run.sh BUILD
# Installs the tree built in BUILD into a scratch prefix, moves the prefix, and uses it as a caller would: one example
# built by CMake and one by pkg-config, both from copies outside the tree.
set -euo pipefail
. "$(dirname -- "$0")/../../scripts/lib.sh"

build=$(realpath -- "$1")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch"/{cmake,pkg-config}
cp "$root"/tests/install/CMakeLists.txt "$root"/examples/save_and_reopen.cpp "$scratch/cmake"
cp "$root"/examples/walk_sections.cpp "$scratch/pkg-config"

# Debug information names the place it was made in; nothing else may.
quietly cmake --install "$build" --prefix "$scratch/made" --strip
mv "$scratch/made" "$scratch/prefix"
if grep -rlF -e "$root/libcrossplatform" -e "$build" -e "$scratch/made" "$scratch/prefix"; then
  die "the installed files above name the place they were built or first installed"
fi

cd "$scratch/cmake"
quietly cmake -S . -B build -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix"
cmake --build build -- --quiet
build/save_and_reopen "$scratch/saved"

cd "$scratch/pkg-config"
export PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name veltracommon.pc)")
libdir=$(pkg-config --variable=libdir veltracommon)
c++ -std=c++17 walk_sections.cpp -o walk_sections $(pkg-config --cflags --libs veltracommon) -Wl,-rpath,"$libdir"
./walk_sections "$scratch/saved"

# Every public header compiles as the only one a caller includes, and gives no warning.
(cd "$scratch/prefix/include" && find libcrossplatform -name '*.h' | sort) > headers
grep -q . headers || die "no public header is installed"
compile_alone() {
  echo "#include <$1>" | c++ -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -x c++ - \
    $(pkg-config --cflags veltracommon) || die "$1 does not compile alone"
}
export -f compile_alone die
xargs -P "$jobs" -I{} bash -c 'compile_alone {}' < headers

# Relocations are read-only before the program starts, stacks and the sizes given to libc are checked, and on x86-64 calls
# through pointers end at marked places. (The note that says so for a whole file is the start files' business.)
for file in "$(find "$scratch/prefix" -name 'libveltracommon.so' -exec realpath {} +)" "$scratch/prefix/bin/veltra"; do
  readelf -lW "$file" > elf
  readelf -dW "$file" >> elf
  readelf --dyn-syms -W "$file" >> elf
  for sign in GNU_RELRO 'FLAGS.*NOW' 'UND __stack_chk_fail' 'UND __[a-z]*_chk@'; do
    grep -q "$sign" elf || die "$file is not hardened: no $sign"
  done
  [[ $(uname -m) != x86_64 || $(objdump -d "$file" | grep -c endbr64) -gt 100 ]] || die "$file marks no targets of calls"
done

# A key is read from its file, goes into a header of the owner's alone, and stands nowhere else in the build tree.
key=00112233445566778899aAbBcCdDeEfF
configure() {
  cmake -S "$root" -B keyed -G Ninja -DVELTRA_TOOLS=OFF -DVELTRA_EXAMPLES=OFF -DVELTRA_CREDENTIAL_KEY_FILE="$PWD/key"
}
echo $key > key
quietly configure
header=$(find keyed -name CredentialKey.h)
grep -q '{0x00, 0x11, .* 0xeE, 0xfF}' "$header" || die "the key is not what its file says"
[[ $(stat -c %a "$header") == 600 ]] || die "others can read $header"
! grep -rlF $key keyed || die "the files above hold the key"
echo ${key}0 > key
! configure > refused 2>&1 && grep -q "32 hexadecimal digits" refused || die "a key of 33 digits is taken"

# The command, its pages and its completions are where the system looks for them.
"$scratch/prefix/bin/veltra" --version > /dev/null
for file in man/man1/veltra.1 man/man1/veltra-doctor.1 man/man7/veltra-findings.7 bash-completion/completions/veltra zsh/site-functions/_veltra; do
  [[ -s $scratch/prefix/share/$file ]] || die "share/$file is not installed"
done
say "$(wc -l < headers) public headers, CMake package and veltracommon.pc work from a moved prefix."
