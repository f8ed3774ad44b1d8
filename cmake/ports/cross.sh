# ./dev cross: builds everything for another architecture of Debian and runs the tests.

source cmake/ports/debian_packages.sh
source cmake/ports/port_tests.sh

cross_packages=(libstdc++-12-dev libcli11-dev libexif-dev libexpat1-dev libgtest-dev librapidcheck-dev libsqlite3-dev
    libstb-dev libutf8proc-dev nlohmann-json3-dev)

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
    build_port "$directory/release" --toolchain "$project/cmake/ports/$1.cmake"
    if [[ -e $list ]]; then
        tests=$(sed -n 's/^\([^#:]*[.][^:]*\):.*/\1/p' "$list" | paste -sd :)
        programs=$(sed -n 's/^\([^#:.]*\):.*/\1/p' "$list" | paste -sd '|')
        say 'Left out:'
        sed '/^#/d' "$list" >&2
    fi
    GTEST_FILTER=*${tests:+-$tests} test_port "$directory/release" ${programs:+--exclude-regex "^($programs)"} "${@:2}"
}
