#!/bin/bash
# run.sh BUILD
# Installs the tree built in BUILD, both kinds of the library, moves the prefix, and uses it in every way README names, by the
# programs and lines that stand there, from copies outside the tree. All paths have spaces in their names.
set -euo pipefail
. "$(dirname -- "$0")/../../scripts/lib.sh"

build=$(realpath -- "$1")
clean=$(mktemp -d)
trap 'rm -rf "$clean"' EXIT
scratch="$clean/a caller"
mkdir "$scratch"

# snippet LANGUAGE NUMBER prints one of the fenced blocks of README's text, counted from 1.
snippet() {
  awk -v fence="\`\`\`$1" -v number="$2" '
    inside && /^```$/ { exit }
    inside
    $0 == fence && ++count == number { inside = 1 }
    END { if (count < number) exit 1 }' "$root/README.md" || die "README has no block $2 of $1"
}
# caller NAME NUMBER makes the directory of a caller with README's program and that CMake text, and enters it.
caller() {
  mkdir "$scratch/$1"
  cd "$scratch/$1"
  snippet cpp 1 > program.cpp
  [[ $2 == 0 ]] || snippet cmake "$2" > CMakeLists.txt
}
configure() { quietly cmake -S . -B build -G Ninja -Wno-dev "$@"; }
run() { [[ $("$1" saved) == "FDP-A1 port 07: Pass (read: ok)" ]] || die "$PWD: $1 does not work"; }
is_shared() { readelf -dW "$1" | grep -q 'NEEDED.*libveltracommon\.so\.1]'; }

# Debug information names the place it was made in; nothing else may. Every file belongs to a component.
DESTDIR="$scratch/root" quietly cmake --install "$build" --prefix "/made here" --strip
for component in runtime development tools doc; do
  quietly cmake --install "$build" --prefix "$scratch/made" --strip --component $component
done
diff -r "$scratch/made" "$scratch/root/made here" || die "the components are not the whole"
mv "$scratch/made" "$scratch/prefix"
strip -g "$scratch/prefix/lib/libveltracommon.a"  # which cmake does not
if grep -rlF -e "$root/libcrossplatform" -e "$build" -e "$scratch/made" "$scratch/prefix"; then
  die "the installed files above name the place they were built or first installed"
fi
for file in doc/VeltraCommon/{README.md,docs/format.md,examples/walk_sections.cpp,copyright-libdeflate-dev} \
    man/man1/veltra.1 man/man1/veltra-doctor.1 man/man7/veltra-findings.7 bash-completion/completions/veltra \
    zsh/site-functions/_veltra mime/packages/veltra.xml veltra/veltra.magic; do
  [[ -s $scratch/prefix/share/$file ]] || die "share/$file is not installed"
done
"$scratch/prefix/bin/veltra" --version > /dev/null

# find_package, both kinds; one of them from a project with other flags and another standard.
caller cmake 1
configure -DCMAKE_PREFIX_PATH="$scratch/prefix"
cmake --build build -- --quiet
run build/program
is_shared build/program || die "find_package alone takes the static library"
configure -DCMAKE_PREFIX_PATH="$scratch/prefix" -DBUILD_SHARED_LIBS=OFF -DCMAKE_CXX_STANDARD=20 \
  -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Wshadow -Werror -fno-exceptions -fvisibility=hidden -D_GLIBCXX_ASSERTIONS"
cmake --build build -- --quiet
run build/program
! is_shared build/program || die "BUILD_SHARED_LIBS=OFF takes the shared library"
sed 's/1\.0 REQUIRED/1.0 REQUIRED COMPONENTS shared odd/' CMakeLists.txt > changed && mv changed CMakeLists.txt
! configure > refused 2>&1 && grep -q odd refused || die "a component that is not there is found"

# The examples as they are installed, C among them.
cp -r "$scratch/prefix/share/doc/VeltraCommon/examples" "$scratch"
cd "$scratch/examples"
configure -DCMAKE_PREFIX_PATH="$scratch/prefix"
cmake --build build --target walk_sections package_builder -- --quiet
build/walk_sections ../cmake/saved > /dev/null
build/package_builder package > /dev/null
! readelf -dW build/package_builder | grep -q 'NEEDED.*stdc++' || die "the C compiler did not link package_builder"

# pkg-config by README's lines, which a prefix with spaces is not for.
ln -s "$scratch/prefix" "$clean/veltra"
caller pkg-config 0
cp "$root/examples/package_builder.c" .
for lines in 1 2; do
  snippet sh $lines | sed "s,/opt/veltra,$clean/veltra," > lines.sh
  bash -e lines.sh
done
run ./program
./package_builder package > /dev/null
export PKG_CONFIG_PATH="$scratch/prefix/lib/pkgconfig"
eval "c++ -std=c++17 -fsyntax-only program.cpp $(pkg-config --cflags --libs veltracommon)"

# A part of another project: its own settings hold, ours do not reach it, and nothing of ours is installed with it.
caller parent 2
ln -s "$root" veltracommon
cat >> CMakeLists.txt <<'CMAKE'
install(TARGETS program)
get_target_property(options program COMPILE_OPTIONS)
if(options OR CMAKE_CXX_STANDARD OR CMAKE_POSITION_INDEPENDENT_CODE OR CMAKE_BUILD_TYPE OR TARGET veltra OR TARGET veltra_tests)
  message(FATAL_ERROR "settings of the library reach the project")
endif()
CMAKE
configure -DBUILD_SHARED_LIBS=OFF -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" -DVELTRA_UNITY=ON
cmake --build build -j "$jobs" -- --quiet
run build/program
quietly cmake --install build --prefix "$scratch/of parent"
[[ $(cd "$scratch/of parent" && find . -type f) == ./bin/program ]] || die "a project installs what is ours with its own"
cp program.cpp "$scratch"
configure -DVELTRA_INSTALL=ON
cmake --build build -- --quiet
quietly cmake --install build --prefix "$scratch/static"
cd ..
snippet cmake 3 > CMakeLists.txt
ln -s "$root" veltracommon
configure -DVELTRA_INSTALL=ON
grep -q 'build program: .*libveltracommon\.so' build/build.ninja || die "FetchContent does not link the library"
! grep -rq libdeflate --include=veltracommon.pc build || die "the shared library alone asks for what only the static one calls"

# The static library alone, by pkg-config and from C by both.
caller alone 0
cp "$root/examples/package_builder.c" .
export PKG_CONFIG_PATH="$scratch/static/lib/pkgconfig"
eval "c++ -std=c++17 program.cpp -o program $(pkg-config --cflags --libs veltracommon)"
run ./program
eval "cc package_builder.c -o package_builder $(pkg-config --static --cflags --libs veltracommon)"
./package_builder package > /dev/null
cat > CMakeLists.txt <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(Builder LANGUAGES C)
find_package(VeltraCommon 1.0 REQUIRED)
add_executable(builder package_builder.c)
target_link_libraries(builder PRIVATE Veltra::Common)
CMAKE
configure -DCMAKE_PREFIX_PATH="$scratch/static"
cmake --build build -- --quiet
build/builder package > /dev/null

# Every public header compiles as the only one a caller includes, and gives no warning.
cd "$scratch"
export PKG_CONFIG_PATH="$clean/veltra/lib/pkgconfig"
(cd prefix/include && find libcrossplatform -name '*.h' | sort) > headers
grep -q . headers || die "no public header is installed"
compile_alone() {
  echo "#include <$1>" | c++ -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -x c++ - \
    $(pkg-config --cflags veltracommon) || die "$1 does not compile alone"
}
export -f compile_alone die
xargs -P "$jobs" -I{} bash -c 'compile_alone {}' < headers

# Relocations are read-only before the program starts, stacks and the sizes given to libc are checked, and on x86-64 calls
# through pointers end at marked places. (The note that says so for a whole file is the start files' business.)
for file in "$(realpath prefix/lib/libveltracommon.so)" prefix/bin/veltra; do
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
configure_with_key() {
  cmake -S "$root" -B keyed -G Ninja -DVELTRA_TOOLS=OFF -DVELTRA_EXAMPLES=OFF -DVELTRA_CREDENTIAL_KEY_FILE="$PWD/key"
}
echo $key > key
quietly configure_with_key
header=$(find keyed -name CredentialKey.h)
grep -q '{0x00, 0x11, .* 0xeE, 0xfF}' "$header" || die "the key is not what its file says"
[[ $(stat -c %a "$header") == 600 ]] || die "others can read $header"
! grep -rlF $key keyed || die "the files above hold the key"
echo ${key}0 > key
! configure_with_key > refused 2>&1 && grep -q "32 hexadecimal digits" refused || die "a key of 33 digits is taken"
say "$(wc -l < headers) public headers; CMake, pkg-config, C and a project around the tree, shared and static, work."
