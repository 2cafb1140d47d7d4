#!/usr/bin/env bash
# Checks everything. See --help.
# shellcheck disable=SC2317 # steps are called by their names
set -uo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$project" || exit 1

fuzz_seconds=48
jobs=$(nproc)
passed=0
failed=0

usage() {
    cat << 'END'
Usage: ./test.sh            every step below but debug
       ./test.sh --quick    debug alone: for between two edits
       ./test.sh STEP...    these steps, in this order

Steps:
  scripts    shellcheck on the shell scripts
  format     clang-format on every C++ file
  layering   no #include points where it may not
  debug      GCC build, all tests
  release    GCC build of the programs and the benchmarks, optimised (in build/bench)
  asan       GCC build with address and undefined-behaviour sanitizers, all tests
  tsan       Clang build with the thread sanitizer, all tests
  tidy       clang-tidy on src/ and tools/, file by file
  fuzz       Clang build of the fuzz targets, each over its seeds and then over new input
  package    the Debian package of that build: what it says of itself, and whether the program
             works where nothing else is installed
  trixie     Debian 13, in build/debian: the build, the package, the end-to-end tests of what it
             installs, and whether that works where nothing else is

Each builds in build/<step>, and installs the Debian packages that are missing (asking sudo
where it must). The last line counts: a test is one, and so is every other check.
END
}

# --- counting and printing ---

pass() {
    passed=$((passed + 1))
}

# fail WHAT: counts it and says it.
fail() {
    failed=$((failed + 1))
    echo "FAILED: $1"
}

# check WHAT COMMAND...: one check, which holds when the command succeeds.
check() {
    local what=$1
    shift
    if "$@"; then pass; else fail "$what"; fi
}

# run_step NAME: its heading, the step itself, and how long it took.
run_step() {
    local begin=$SECONDS
    echo
    echo "== $1"
    "step_$1"
    echo "   ($1: $((SECONDS - begin)) s)"
}

# --- what several steps need ---

cpp_files() {
    git ls-files --cached --others --exclude-standard --deduplicate -- '*.cpp' '*.h' \
        | while read -r file; do if [[ -e $file ]]; then echo "$file"; fi; done
}

# build PRESET [TARGET...]: quiet unless it fails, and then all faults are there to read.
build() {
    local preset=$1 log=build/$1.log
    shift
    mkdir -p build
    if ! cmake --preset "$preset" > "$log" 2>&1; then
        cat "$log"
        return 1
    fi
    if ! cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"} -- -k 0 > "$log" 2>&1; then
        grep -v '^\[[0-9]*/[0-9]*\]' "$log"
        return 1
    fi
}

# run_tests PRESET: adds CTest's own count to ours; prints what did not pass.
run_tests() {
    local log=build/$1-tests.log
    ctest --preset "$1" -j "$jobs" > "$log" 2>&1
    count_tests "$1" "$log"
}

# count_tests WHOSE LOG: of what CTest has printed.
count_tests() {
    local log=$2 total bad
    grep -Ev '^ *Start +[0-9]+:|^ *[0-9]+/[0-9]+ Test +#[0-9]+:.* Passed +[0-9.]+ sec$' "$log"
    read -r bad total < <(sed -nE 's/^.* ([0-9]+) tests? failed out of ([0-9]+)$/\1 \2/p' "$log")
    if [[ -z ${total:-} ]]; then
        fail "the tests of $1 did not run"
        return
    fi
    passed=$((passed + total - bad))
    failed=$((failed + bad))
}

build_and_test() {
    if build "$1"; then
        pass
        run_tests "$1"
    else
        fail "the build of $1; its tests did not run"
    fi
}

# --- the steps ---

step_scripts() {
    check "shellcheck" shellcheck --external-sources run.sh test.sh .ci/run tools/*.sh bench/*.sh packaging/*.sh resources/*.sh
}

step_format() {
    # shellcheck disable=SC2046 # our file names have no blanks
    check "formatting (clang-format-14 -i mends it)" \
        clang-format-14 --dry-run -Werror $(cpp_files)
}

step_layering() {
    check "layering" cmake -P cmake/CheckLayering.cmake
}

step_debug() {
    build_and_test debug
}

# The preset "release" is for those who want to use the program, whose compiler may warn of what
# ours does not. Here a warning is a fault, and the rest is the same.
step_release() {
    check "the optimised build" build bench
}

step_package() {
    check "the programs" build bench ferrylane ferrylane-phone
    check "the description for software centres" \
        appstreamcli validate --no-net packaging/example.tarrowby.ferrylane.metainfo.xml
    check "the desktop file" desktop-file-validate packaging/ferrylane.desktop
    check "making the package" make_package
    check "lintian" lintian --allow-root --tag-display-limit 0 --fail-on error "$(package_file)"
    check "the package on a bare Debian 12" packaging/try-package.sh "$(package_file)" bookworm
}

step_trixie() {
    local log=build/trixie-tests.log
    packaging/try-build.sh trixie > "$log" 2>&1
    count_tests trixie "$log"
    check "the package on a bare Debian 13" \
        packaging/try-package.sh build/debian/trixie-build/build/*.deb trixie
}

make_package() {
    rm -f build/bench/*.deb
    (cd build/bench && cpack) > build/package.log 2>&1 || {
        cat build/package.log
        return 1
    }
}

package_file() {
    find build/bench -maxdepth 1 -name '*.deb'
}

step_asan() {
    build_and_test asan
}

step_tsan() {
    build_and_test tsan
}

step_tidy() {
    # Nothing is built but what AUTOMOC makes.
    if ! build tidy autogen; then
        fail "the generated files for clang-tidy"
        return
    fi
    check "clang-tidy" tidy_all
}

# One process a file, as many at once as there are cores; what it found goes to stdout.
tidy_all() {
    cpp_files | grep -E '^(src|tools)/.*\.cpp$' \
        | xargs -P "$jobs" -n 1 clang-tidy-14 --quiet -p build/tidy 2> build/tidy.log
}

step_fuzz() {
    local -a targets
    if ! build fuzz fuzz_targets; then
        fail "the build of fuzz; no target ran"
        return
    fi
    pass
    mapfile -t targets < <(find build/fuzz/bin -name 'fuzz_*' -type f -executable | sort)
    if [[ ${#targets[@]} -eq 0 ]]; then
        fail "there is no fuzz target"
        return
    fi
    run_tests fuzz
    local seconds=$((fuzz_seconds / ${#targets[@]})) target
    for target in "${targets[@]}"; do
        check "${target##*/} (input in build/fuzz/artifacts)" fuzz "$target" $((seconds + 1))
    done
}

# fuzz PROGRAM SECONDS: from the seeds, whose folder stays as it is.
fuzz() {
    local name=${1##*/fuzz_} scratch log symbolizer
    local -a dictionary=()
    symbolizer=$(command -v llvm-symbolizer-14)
    scratch=build/fuzz/corpus/$name
    log=build/fuzz/$name.log
    rm -rf "$scratch"
    mkdir -p "$scratch" build/fuzz/artifacts
    if [[ -d fuzz/corpus/$name ]]; then cp -r "fuzz/corpus/$name/." "$scratch"; fi
    if [[ -e fuzz/dictionary/$name.txt ]]; then dictionary=("-dict=fuzz/dictionary/$name.txt"); fi
    if ASAN_SYMBOLIZER_PATH=$symbolizer "$1" -max_total_time="$2" -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix=build/fuzz/artifacts/ "${dictionary[@]}" "$scratch" > "$log" 2>&1; then
        echo "$name: $(sed -n 's/^Done \([0-9]*\) runs.*/\1 runs/p' "$log")"
    else
        tail -n 60 "$log"
        return 1
    fi
}

# --- which steps ---

# A function, so that the shell has read all of this file before it begins: it may be edited
# while it runs.
main() {
    local -a steps=(scripts format layering release package asan tsan tidy fuzz trixie) sections=(build test check)
    local step
    case ${1:-} in
        --help | -h)
            usage
            return
            ;;
        --quick)
            steps=(debug)
            sections=(build test)
            ;;
        ?*)
            steps=("$@")
            ;;
    esac
    for step in "${steps[@]}"; do
        if ! declare -F "step_$step" > /dev/null; then
            echo "test.sh: there is no step '$step'; see ./test.sh --help" >&2
            return 2
        fi
    done

    tools/install-packages.sh "${sections[@]}" || return
    mkdir -p build
    # Two builds in one folder would break each other's files.
    exec 9> build/test.lock
    if ! flock --nonblock 9; then
        echo "Another ./test.sh is at work here; waiting for its end."
        flock 9
    fi
    for step in "${steps[@]}"; do
        run_step "$step" 9>&-
    done

    echo
    echo "$passed passed, $failed failed"
    [[ $failed -eq 0 ]]
}

main "$@"
exit $?
