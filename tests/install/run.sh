#!/bin/bash
# run.sh
# Installs a build into a scratch prefix, moves the prefix, and uses it as a caller would: one example built by
# CMake and one by pkg-config, both from copies outside the tree.
set -euo pipefail
. "$(dirname -- "$0")/../../scripts/lib.sh"

build=$root/build/install
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch"/{cmake,pkg-config}
cp "$root"/tests/install/CMakeLists.txt "$root"/examples/save_and_reopen.cpp "$scratch/cmake"
cp "$root"/examples/walk_sections.cpp "$scratch/pkg-config"

# Neither optimised nor with debug information: what is looked at here are files and names, and it builds in half the time.
quietly cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DVELTRA_EXAMPLES=OFF
cmake --build "$build" -j "$jobs" -- --quiet
quietly cmake --install "$build" --prefix "$scratch/made"
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

# The command, its pages and its completions are where the system looks for them.
"$scratch/prefix/bin/veltra" --version > /dev/null
for file in man/man1/veltra.1 man/man1/veltra-doctor.1 bash-completion/completions/veltra zsh/site-functions/_veltra; do
  [[ -s $scratch/prefix/share/$file ]] || die "share/$file is not installed"
done
say "$(wc -l < headers) public headers, CMake package and veltracommon.pc work from a moved prefix."
