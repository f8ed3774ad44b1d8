# Runs the tests of the Windows build under Wine.

# Keeps Wine's server between the programs, which then start faster.
start_wine() {
    export WINEPREFIX=$windows_build/wine WINEDEBUG=-all
    wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver64)
    "$wineserver" -p || true # it may already run
}

stop_wine() { "$wineserver" -k || true; }

# The names of the test programs, the longest first
windows_test_programs() {
    local program
    for program in command_tests plantjournal_tests; do
        echo "$program"
    done
    find "$windows_build/tests/tests" -name '*.exe' -printf '%f\n' | sed 's/\.exe$//' | sort |
        grep -vx 'command_tests\|plantjournal_tests'
}

# windows_program NAME: prints the path of a test program.
windows_program() { find "$windows_build/tests/tests" -name "$1.exe"; }

# The tests that left_out_windows.txt names one by one, as a filter of GoogleTest
windows_tests_left_out() {
    sed -n 's/^\([A-Za-z0-9_\/*]*\.[A-Za-z0-9_\/*]*\):.*/\1/p' tests/left_out_windows.txt | grep -v '\.cpp$' | paste -sd :
}

# windows_parts PROGRAM: prints the parts of the program that run. The long programs run in eighths. The quick set has
# only some eighths of them.
windows_parts() {
    case ${windows_quick:+quick}:$1 in
        quick:command_tests | quick:plantjournal_tests) echo 0 1 ;;
        quick:*) ;;
        :command_tests | :plantjournal_tests) echo 0 1 2 3 4 5 6 7 ;;
        *) echo 0 ;;
    esac
}

# run_windows_program PROGRAM PART: writes its output to build/windows/results/.
run_windows_program() {
    local output=$windows_build/results/$1.$2 status=0 parts=1
    [[ $1 != command_tests && $1 != plantjournal_tests ]] || parts=8
    if [[ $1 == *_corpus_test ]]; then # is not of GoogleTest
        cmake/ports/wine.sh "$(windows_program "$1")" >"$output.txt" 2>&1 || status=$?
    else
        # Wine gives a program a console, which Ctrl-C needs, only where it is on a terminal.
        GTEST_FILTER="*-$(windows_tests_left_out)" GTEST_TOTAL_SHARDS=$parts GTEST_SHARD_INDEX=$2 \
            script --quiet --return --command \
            "cmake/ports/wine.sh '$(windows_program "$1")' >'$output.txt' 2>&1" /dev/null </dev/null >/dev/null || status=$?
        # The status of a program that crashes under Wine can be 0.
        grep -q '^\[  PASSED  \]' "$output.txt" || status=1
    fi
    echo "$status" >"$output.status"
}

# The number of tests in a program that was built for this system, or - where it was not built
tests_here() {
    local program
    program=$(find build/release/tests -name "$1" -type f -executable 2>/dev/null || true)
    if [[ $program ]]; then
        "$program" --gtest_list_tests | grep -c '^  '
    else
        echo -
    fi
}

# counted_tests RESULT PROGRAM: prints how many tests of the program have the result, PASSED or SKIPPED.
counted_tests() {
    sed -n "s/.*\\[  $1 *\\] \\([0-9]*\\) tests\\{0,1\\}[.,].*/\\1/p" "$windows_build/results/$2".*.txt |
        awk '{ sum += $1 } END { print sum + 0 }'
}

# report_windows_program PROGRAM: prints its line of the table and its failures. Fails where a test failed.
report_windows_program() {
    local output part here passed skipped left_out=- result=0
    passed=$(counted_tests PASSED "$1")
    skipped=$(counted_tests SKIPPED "$1")
    if [[ $1 == *_corpus_test ]]; then
        here=1 passed=1
    else
        here=$(tests_here "$1")
    fi
    # The quick set does not run the whole program.
    [[ $here == - || $windows_quick ]] || left_out=$((here - passed - skipped))
    printf '%-32s %8s %8s %8s %8s\n' "$1" "$passed" "$skipped" "$left_out" "$here"
    for part in $(windows_parts "$1"); do
        output=$windows_build/results/$1.$part
        [[ $(<"$output.status") != 0 ]] || continue
        result=1
        sed -n '/^\[  FAILED  \] [^ ]*\( (.*\)*$/p' "$output.txt" | sort -u
        grep -q '^\[  PASSED  \]' "$output.txt" || tail -n 5 "$output.txt"
    done
    return "$result"
}

# Runs the programs of the set, two at once, and prints how many of their tests passed.
run_windows_tests() {
    local program part programs=() status=0 results=$windows_build/results
    while IFS= read -r program; do
        [[ -z $(windows_parts "$program") ]] || programs+=("$program")
    done < <(windows_test_programs)
    rm -rf "$results"
    mkdir -p "$results"
    say 'Running the tests under Wine'
    for program in "${programs[@]}"; do
        for part in $(windows_parts "$program"); do
            while (($(jobs -pr | wc -l) >= 2)); do
                wait -n || true
            done
            run_windows_program "$program" "$part" &
        done
    done
    wait
    # On a busy machine, a test that waits for another program can fail.
    for program in "${programs[@]}"; do
        for part in $(windows_parts "$program"); do
            [[ $(<"$results/$program.$part.status") == 0 ]] || {
                say "Running $program, part $part, a second time"
                mv "$results/$program.$part.txt" "$results/$program.$part.first"
                run_windows_program "$program" "$part"
            }
        done
    done
    printf '%-32s %8s %8s %8s %8s\n' program passed skipped 'left out' Linux
    for program in "${programs[@]}"; do
        report_windows_program "$program" || status=1
    done
    printf '\nSkipped:\n'
    sed -n '/: Skipped\r*$/{n;h};/^\[  SKIPPED \] .* ms)/{s/^\[  SKIPPED \] \([^ ]*\) .*/\1: /;G;s/[\r\n]//g;p}' "$results"/*.txt
    printf '\nLeft out:\n'
    sed '/^#/d; /^$/d' tests/left_out_windows.txt
    ((status == 0)) || fail 'windows: tests failed; see build/windows/results/'
    [[ $windows_quick ]] || check_tests_left_out $(windows_test_programs) # needs all programs
}

# check_tests_left_out PROGRAM...: fails where left_out_windows.txt names a test that no program has. CMake has checked
# the files.
check_tests_left_out() {
    local program name names=$windows_build/results/names
    for program; do
        [[ $program == *_corpus_test ]] ||
            cmake/ports/wine.sh "$(windows_program "$program")" --gtest_list_tests \
                "--gtest_filter=$(windows_tests_left_out)" |
            awk '/^[^ ].*\./ { sub(/[ \r].*/, ""); suite = $0 } /^  / { sub(/\r/, ""); print suite $1 }'
    done >"$names"
    while IFS= read -r name; do
        grep -qE "^${name//\*/.*}\$" "$names" || fail "tests/left_out_windows.txt: no test is named $name"
    done < <(windows_tests_left_out | tr : '\n')
}
