# ./dev libcxx: builds everything with clang++ and libc++ and runs the tests.

source cmake/ports/debian_packages.sh
source cmake/ports/port_tests.sh

# libcxx_library NAME SOURCE [OPTION...]: builds a library with libc++ and installs it in build/libcxx/prefix.
libcxx_library() {
    local name=$1 directory=$project/build/libcxx
    [[ ! -e $directory/$name.built ]] || return 0
    say "Building $name with libc++"
    quietly cmake -G Ninja -S "$2" -B "$directory/$name" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_CXX_FLAGS=-stdlib=libc++ -DCMAKE_INSTALL_PREFIX="$directory/prefix" "${@:3}"
    quietly cmake --build "$directory/$name" --target install
    : >"$directory/$name.built"
}

# The source of RapidCheck, which some mirrors do not have
fetch_rapidcheck() {
    mkdir -p "$1/sources"
    private_apt "$1/apt"
    (cd "$1/sources" && unpack_source rapidcheck) 2>/dev/null
}

# libcxx [CTEST-OPTION...]
libcxx() {
    local directory=$project/build/libcxx flags model=ON
    need "${test_packages[@]}" clang dpkg-dev googletest libc++-dev libc++abi-dev
    libcxx_library googletest /usr/src/googletest -DBUILD_GMOCK=OFF
    if [[ ! -e $directory/rapidcheck.built ]]; then
        (fetch_rapidcheck "$directory") || model=OFF
    fi
    [[ $model == OFF ]] || libcxx_library rapidcheck "$(echo "$directory"/sources/rapidcheck-*/)"
    flags=$(sed -n 's/.*"CMAKE_CXX_FLAGS": "\(-Wall[^"]*\)".*/\1/p' CMakePresets.json)
    build_port "$directory/release" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS="$flags -stdlib=libc++" \
        -DCMAKE_PREFIX_PATH="$directory/prefix" -DPLANTJOURNAL_TEST_MODEL=$model -DPLANTJOURNAL_TEST_POSIX=OFF
    say 'Left out:'
    say 'plantjournal_strict_posix: the headers of libc++ need the extensions of glibc'
    [[ $model == ON ]] || say 'model_test: the source of RapidCheck cannot be fetched'
    test_port "$directory/release" "$@"
}
