# ./dev cross: builds everything for another architecture of Debian and runs the tests.

source cmake/ports/debian_packages.sh
source cmake/ports/port_tests.sh

cross_packages=(libstdc++-12-dev libcli11-dev libexif-dev libexpat1-dev libgtest-dev librapidcheck-dev libsqlite3-dev
    libstb-dev libutf8proc-dev nlohmann-json3-dev)

# check_list FILE: fails where the list of the tests that are left out names a test, a suite or a program that does not
# exist.
check_list() {
    local name
    [[ -e $1 ]] || return 0
    while IFS= read -r name; do
        grep -rqE --include='*_test.cpp' --include=CMakeLists.txt "\<${name/./, }\>" tests || fail "$1: no test is named $name"
    done < <(sed '/^#/d; s/:.*//; s/\.\*$//' "$1")
}

# cross ARCHITECTURE [CTEST-OPTION...]
cross() {
    local directory=$project/build/cross/$1 list=cmake/ports/left_out_$1.txt tests='' programs=''
    case $1 in
        arm64) need g++-aarch64-linux-gnu qemu-user-static ;;
        i386) need g++-i686-linux-gnu ;;
        *) fail "cross: $1: unknown architecture; use arm64 or i386" ;;
    esac
    need "${test_packages[@]}"
    if [[ ! -e $directory/root.complete ]]; then
        say "Fetching the packages for $1"
        private_apt "$directory/apt" "$1"
        unpack_packages "$directory/root" "${cross_packages[@]}"
        unset APT_CONFIG
        : >"$directory/root.complete"
    fi
    check_list "$list"
    build_port "$directory/release" --toolchain "$project/cmake/ports/$1.cmake"
    if [[ -e $list ]]; then
        tests=$(sed -n 's/^\([^#:]*[.][^:]*\):.*/\1/p' "$list" | paste -sd :)
        programs=$(sed -n 's/^\([^#:.]*\):.*/\1/p' "$list" | paste -sd '|')
        say 'Left out:'
        sed '/^#/d' "$list" >&2
    fi
    GTEST_FILTER=*${tests:+-$tests} test_port "$directory/release" ${programs:+--exclude-regex "^($programs)"} "${@:2}"
}
