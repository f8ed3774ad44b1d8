# ./dev libcxx: builds everything with clang++ and libc++ and runs the tests.

source cmake/ports/debian_packages.sh

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

# libcxx [CTEST-OPTION...]
libcxx() {
    local directory=$project/build/libcxx flags model=ON
    need "${test_packages[@]}" clang dpkg-dev googletest libc++-dev libc++abi-dev
    mkdir -p "$directory/sources"
    private_apt "$directory/apt"
    (cd "$directory/sources" && unpack_source rapidcheck) 2>/dev/null || model=OFF # some mirrors do not have it
    unset APT_CONFIG
    libcxx_library googletest /usr/src/googletest -DBUILD_GMOCK=OFF
    if [[ $model == ON ]]; then
        libcxx_library rapidcheck "$(echo "$directory"/sources/rapidcheck-*/)"
    else
        say 'Left out: model_test, because the source of RapidCheck cannot be fetched'
    fi
    say "Configuring $directory/release"
    flags=$(sed -n 's/.*"CMAKE_CXX_FLAGS": "\(-Wall[^"]*\)".*/\1/p' CMakePresets.json)
    quietly cmake --preset release -B "$directory/release" -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_CXX_FLAGS="$flags -stdlib=libc++" -DCMAKE_PREFIX_PATH="$directory/prefix" \
        -DPLANTJOURNAL_TEST_MODEL=$model
    cmake --build "$directory/release"
    ctest --test-dir "$directory/release" --output-on-failure --no-label-summary "$@" 2>&1 | shorten
}
