# Sourced by test and check-all: one function a stage, and what runs them.

. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
cd "$root"

stage_format() {
  local files
  mapfile -d '' files < <(git ls-files -z -- '*.h' '*.cpp' '*.c')
  [[ ${#files[@]} -gt 0 ]] || die "git lists no source file"
  clang-format-14 --dry-run -Werror "${files[@]}"
}

# Every text file ends in a newline, nothing names a directory of somebody's machine, the vectors are as they were made, and
# the Debian packages are built with what scripts/packages.txt lists: its group [build], a compiler apart, and what CMake
# needs for the Python module.
stage_text() {
  local files file bad=0
  mapfile -d '' files < <(git grep -Ilz -e '')
  [[ ${#files[@]} -gt 0 ]] || die "git lists no text file"
  for file in "${files[@]}"; do
    [[ -z $(tail -c 1 -- "$file") ]] || { say "$file: no newline at the end"; bad=1; }
  done
  if git grep -nE '(^|[^[:alnum:]_.-])/(home|root|work|Users)/[[:alnum:]_.-]'; then
    say "The lines above name a directory of one machine."
    bad=1
  fi
  scripts/vectors --check || bad=1
  diff --label scripts/packages.txt <({ packages_of build | grep -vx g++; echo pybind11-dev; echo python3-dev; } | sort) \
    --label debian/control <(sed -n '/^Build-Depends:/,/^$/s/^ \(.*[^,]\),*$/\1/p' debian/control |
      grep -vxe 'debhelper-compat (.*)' -e dh-python | sort) || bad=1
  return $bad
}

# Which room may include which.
stage_arrows() { scripts/arrows; }

# build_and_test PRESET [-DSETTING=VALUE...] [CTEST-OPTION...]
build_and_test() {
  local log preset=$1 settings=()
  shift
  while [[ ${1:-} == -D* ]]; do
    settings+=("$1")
    shift
  done
  quietly cmake --preset "$preset" "${settings[@]}"
  cmake --build --preset "$preset" -j "$jobs" -- --quiet
  log=build/$preset/ctest.log
  ctest --preset "$preset" -j "$jobs" --no-tests=error "$@" > "$log" 2>&1 || { cat "$log"; return 1; }
  sed -n '/ tests passed, /,$p' "$log"
}

stage_dev() { build_and_test dev -DVELTRA_UNITY=ON -LE long; }
# What takes too long for every change.
stage_long() { build_and_test dev -L long; }

# From the tree of the dev stage, whose objects the Python module is made of.
stage_python() {
  local tree
  tree=$(pwd)/build/dev
  quietly cmake --preset dev -DVELTRA_PYTHON=ON
  cmake --build --preset dev -j "$jobs" --target veltra veltra_python -- --quiet
  export VELTRA=$tree/tools/veltra PYTHONPATH=$tree/python PYTHONDONTWRITEBYTECODE=1
  python_types "$tree/python"
  /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/python
}

# python_types DIRECTORY checks the types of the package there and of what uses it.
python_types() {
  MYPYPATH=$1 mypy --python-executable /usr/bin/python3 --strict --ignore-missing-imports --cache-dir build/mypy \
    python/veltra examples/headroom.py bench/fleet.py
}

# The package as pip installs it, on a cluster of two processes, and what the page about it shows.
stage_fleet() {
  local place=build/fleet
  rm -rf "$place"
  /usr/bin/python3 -m venv --system-site-packages "$place"
  quietly "$place/bin/pip" install --no-index --no-build-isolation ./python
  (cd "$place" && PYTHONDONTWRITEBYTECODE=1 bin/python -m pytest -q -p no:cacheprovider --show-capture=no ../../tests/fleet)
}

# Without what lets every call and byte fail in turn or cuts the power, which takes long under sanitizers:
# stage_clang_faults.
stage_clang() { build_and_test clang; }
stage_clang_faults() { build_and_test clang -DVELTRA_FAULTS=ON -L 'faults|crash'; }
stage_release() { build_and_test release; }
# Without what lets every call, allocation and byte fail in turn, and what fuzzers found, which takes long under qemu:
# stage_armhf_faults.
stage_armhf() {
  scripts/armhf-sysroot
  build_and_test armhf
}
stage_armhf_faults() {
  scripts/armhf-sysroot
  build_and_test armhf -DVELTRA_FAULTS=ON -DVELTRA_REPLAY=ON -L 'faults|fuzz'
}

# at_most BYTES FILE fails when the file has more.
at_most() {
  local size
  size=$(stat -c %s "$2")
  say "${2##*/} for armhf, stripped: $size bytes; at most $1"
  ((size <= $1))
}

# The library as the instruments get it does not grow unnoticed, nor does a program that writes and reads one result with
# the static library. Both kinds work for a caller compiled without exceptions. docs/size.md says what the bytes are.
stage_size() {
  local kind prefix=$root/build/device/prefix caller=build/device/caller
  scripts/armhf-sysroot
  quietly cmake --preset device
  cmake --build --preset device -j "$jobs" -- --quiet
  quietly cmake --install build/device --prefix "$prefix" --strip
  at_most 329000 "$prefix/lib/libveltracommon.so.1.0.0"
  quietly dpkg-gensymbols -c4 -aarmhf -plibveltracommon1 -v1.0.0 -e"$prefix/lib/libveltracommon.so.1.0.0" \
    -Idebian/libveltracommon1.symbols -O/dev/null
  for kind in shared static; do
    quietly cmake -S examples -B $caller -G Ninja --toolchain "$root/cmake/armhf.cmake" -DCMAKE_BUILD_TYPE=MinSizeRel \
      -DVELTRA_ARMHF_SYSROOT="$root/build/armhf-sysroot" -DVeltraCommon_DIR="$prefix/lib/cmake/VeltraCommon" \
      -DBUILD_SHARED_LIBS=$([[ $kind == static ]] && say OFF || say ON) -DZLIB_USE_STATIC_LIBS=ON \
      -DCMAKE_CXX_FLAGS="-fno-exceptions -ffunction-sections" -DCMAKE_EXE_LINKER_FLAGS="-Wl,--gc-sections -s"
    cmake --build $caller --target save_and_reopen -- --quiet
    qemu-arm -L build/armhf-sysroot -E LD_LIBRARY_PATH="$prefix/lib" $caller/save_and_reopen $caller/saved
  done
  at_most 138000 $caller/save_and_reopen
}

# What was found is kept in build/fuzz-corpus; the inputs in the tree are replayed by the tests of other stages.
stage_fuzz() { scripts/fuzz --seconds 600; }

# From the tree of the dev stage. A build with no option set is configured only: it compiles nothing that others do not.
stage_install() {
  quietly cmake -S . -B build/plain -G Ninja
  quietly cmake --preset dev -DVELTRA_PYTHON=ON
  cmake --build --preset dev -j "$jobs" --target veltracommon veltracommon_static veltra veltra_pages veltra_python -- --quiet
  tests/install/run.sh build/dev
}

# Every code block of every document compiles, runs or is read by another test. From the tree of the dev stage.
stage_documents() {
  quietly cmake --preset dev -DVELTRA_PYTHON=OFF
  cmake --build --preset dev -j "$jobs" --target veltracommon veltracommon_static veltra veltra_pages make_payloads -- --quiet
  tests/documents.py build/dev
}

# Secrets and the profile are shared between threads; the command reads many files on several.
stage_tsan() {
  quietly cmake --preset tsan
  cmake --build --preset tsan -j "$jobs" --target veltra_tests veltra -- --quiet
  build/tsan/tests/veltra_tests --gtest_brief=1 --gtest_filter='Credential*:EncryptedString*:NetworkProfile*:WifiProfile*'
  build/tsan/tools/veltra doctor -j 4 -q -r tests/vectors || [[ $? == 1 ]]
}

# The unit tests but those that loop over everything or stop the program on purpose.
stage_valgrind() {
  quietly cmake --preset release
  cmake --build --preset release -j "$jobs" --target veltra_tests -- --quiet
  valgrind --quiet --child-silent-after-fork=yes --leak-check=full --errors-for-leak-kinds=definite,indirect --error-exitcode=1 \
    build/release/tests/veltra_tests --gtest_brief=1 --gtest_filter='-*DeathTest*:*Every*:*Exhaustive*:*All*'
}

# What callers are compiled against stays as it was promised.
stage_abi() { scripts/abi; }

# What users of Debian install.
stage_package() { scripts/package; }

stage_coverage() { scripts/coverage; }

# The page of `veltra report` in a browser; the pictures stay in build/report.
stage_report() {
  quietly cmake --preset release
  cmake --build --preset release -j "$jobs" --target veltra -- --quiet
  tests/libinspect/report/render.sh build/release/tools/veltra build/report
}

# The page that needs nothing installed: its module against the command, and the page in a browser. The pictures stay in
# build/browser/tried.
stage_browser() {
  quietly cmake --preset release
  cmake --build --preset release -j "$jobs" --target veltra -- --quiet
  scripts/browser
  page_modules build/browser
  tests/browser/run.sh build/release/tools/veltra build/browser/tried
  local size most=1000000
  size=$(stat -c %s build/browser/veltra.html)
  say "veltra.html: $size bytes; at most $most"
  ((size <= most))
}

# The description of the format for other languages' parsers, compiled and tried on what the library's tests read.
stage_kaitai() { tests/kaitai/run.sh; }

# The API reference, in build/reference/html; what is not documented is an error.
stage_reference() {
  local version
  version=$(sed -nE 's/^#define VELTRA_VERSION_(MAJOR|MINOR|PATCH) //p' libcrossplatform/common/Version.h | paste -sd .)
  rm -rf build/reference && mkdir -p build
  VELTRA_VERSION=$version quietly doxygen scripts/reference.doxyfile
  say "$(find build/reference/html -name '*.html' | wc -l) pages"
}

# Configured apart: one command for each source, and no header that another compiler precompiled.
stage_tidy() {
  quietly cmake --preset dev -B build/tidy -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON
  export -f quietly
  git ls-files -z -- 'libcrossplatform/*.cpp' 'libinspect/*.cpp' 'tools/*.cpp' |
    xargs -0 -n 1 -P "$jobs" bash -c 'quietly clang-tidy-14 -p build/tidy --quiet "$0"'
}

# The power cuts of stage_dev, more of them.
stage_crash() {
  quietly cmake --preset dev
  cmake --build --preset dev -j "$jobs" --target veltra_crash_tests -- --quiet
  VELTRA_SUBSETS=20000 build/dev/tests/crash/veltra_crash_tests --gtest_brief=1
}

# run_stages GROUPS STAGES [STAGE...] installs the groups of packages and runs the named stages of STAGES, all of them
# if none is named. The first that fails ends the run.
run_stages() {
  local groups=$1 known=$2 wanted stage status begun
  shift 2
  wanted=${*:-$known}
  for stage in $wanted; do
    [[ " $known " == *" $stage "* ]] || { say "usage: ${0##*/} [STAGE...]   stages: $known" >&2; exit 2; }
  done
  install_packages $groups
  SECONDS=0
  for stage in $wanted; do
    say "== $stage"
    begun=$SECONDS
    # In a subshell outside any condition, so that "set -e" holds within the stage.
    set +e
    (set -e; "stage_$stage")
    status=$?
    set -e
    if [[ $status != 0 ]]; then
      say "== $stage FAILED after $((SECONDS - begun)) s"
      exit 1
    fi
    say "== $stage passed in $((SECONDS - begun)) s"
  done
  say "== passed: $wanted; $SECONDS s in all"
}
