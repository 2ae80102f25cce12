# Sourced by test and check-all: one function a stage, and what runs them.

. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
cd "$root"

stage_format() {
  local files
  mapfile -d '' files < <(git ls-files -z -- '*.h' '*.cpp' '*.c')
  [[ ${#files[@]} -gt 0 ]] || die "git lists no source file"
  clang-format-14 --dry-run -Werror "${files[@]}"
}

# Every text file ends in a newline, nothing names a directory of somebody's machine, and the vectors are as they were
# made.
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

# The library as the instruments get it does not grow unnoticed.
stage_size() {
  local size most=335000
  scripts/armhf-sysroot
  quietly cmake --preset device
  cmake --build --preset device -j "$jobs" --target veltracommon -- --quiet
  arm-linux-gnueabihf-strip -o build/device/stripped.so build/device/libcrossplatform/libveltracommon.so
  size=$(stat -c %s build/device/stripped.so)
  say "libveltracommon.so for armhf, stripped: $size bytes; at most $most"
  ((size <= most))
}

# What was found is kept in build/fuzz-corpus; the inputs in the tree are replayed by the tests of other stages.
stage_fuzz() { scripts/fuzz --seconds 600; }

# From the tree of the dev stage. A build with no option set is configured only: it compiles nothing that others do not.
stage_install() {
  quietly cmake -S . -B build/plain -G Ninja
  quietly cmake --preset dev
  cmake --build --preset dev -j "$jobs" --target veltracommon veltra veltra_pages -- --quiet
  tests/install/run.sh build/dev
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
