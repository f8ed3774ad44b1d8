# Functions that build the project for another system or library and run the tests.

# build_port DIRECTORY OPTION...: builds everything in DIRECTORY. Compiles several files as one unit, and runs each test
# program as one test, which is quicker.
build_port() {
    say "Configuring ${1#"$project/"}"
    quietly cmake --preset release -B "$1" -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=16 \
        -DPLANTJOURNAL_TEST_PROGRAMS_WHOLE=ON -DPLANTJOURNAL_COMPARE_TYPES=OFF "${@:2}"
    cmake --build "$1"
}

# test_port DIRECTORY [CTEST-OPTION...]: runs the tests. Prints how many passed, failed or were skipped, and why they were
# skipped.
test_port() {
    local status=0
    say 'Running the tests'
    ctest --test-dir "$1" --parallel 2 --no-tests=error --output-on-failure --no-label-summary "${@:2}" 2>&1 |
        shorten || status=$?
    awk '
        /^\[  (PASSED |SKIPPED) \] [0-9]+ tests?[.,]/ { count[$2] += $4 }
        /^\[  FAILED  \] .* \([0-9]+ ms\)$/ { count["FAILED"]++ }
        isReason && !reasons[$0]++ { list = list "\n  " $0 }
        { isReason = / Skipped$/ }
        END {
            printf "Tests in the test programs: %d passed, %d failed, %d skipped%s\n",
                count["PASSED"], count["FAILED"], count["SKIPPED"], list == "" ? "" : ":" list
        }' "$1/Testing/Temporary/LastTest.log"
    return "$status"
}
