# ./dev windows: cross-builds everything for Windows, runs the tests under Wine, and packs a .zip.

source cmake/ports/debian_packages.sh
source cmake/ports/windows_libraries.sh
source cmake/ports/windows_tests.sh
source cmake/ports/windows_package.sh

windows_packages=(g++-mingw-w64-x86-64-posix wine wine64 autoconf automake dpkg-dev googletest libtool make tcl unzip zip)
windows_build=$project/build/windows

# configure_windows NAME [OPTION...]
configure_windows() {
    say "Configuring build/windows/$1"
    # A build directory that was moved or copied with the project still refers to the old path.
    grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$project" "$windows_build/$1/CMakeCache.txt" || rm -rf "${windows_build:?}/$1"
    quietly cmake --preset release -B "$windows_build/$1" --toolchain "$project/cmake/ports/windows.cmake" \
        -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=16 -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DPLANTJOURNAL_COMPARE_TYPES=OFF "${@:2}"
}

# windows [--quick]
windows() {
    windows_quick=''
    if [[ ${1-} == --quick ]]; then
        windows_quick='plantjournal_tests command_tests' # the tests of the code that calls Windows
        shift
    fi
    (($# == 0)) || fail 'usage: ./dev windows [--quick]'
    need "${test_packages[@]}" "${windows_packages[@]}"
    windows_libraries
    # The tests replace functions of SQLite and of Windows, which they can do only for static libraries.
    configure_windows tests -DPLANTJOURNAL_TEST_MODEL=OFF -DPLANTJOURNAL_TEST_PROGRAMS_WHOLE=ON \
        -DCMAKE_CXX_FLAGS_RELEASE='-O1 -DNDEBUG' -DCMAKE_EXE_LINKER_FLAGS='-static -s'
    cmake --build "$windows_build/tests" ${windows_quick:+--target $windows_quick}
    # The command finds the DLLs in its own directory.
    configure_windows shared -DBUILD_SHARED_LIBS=ON -DPLANTJOURNAL_BUILD_TESTS=OFF -DPLANTJOURNAL_BUILD_EXAMPLES=OFF \
        -DCMAKE_CXX_FLAGS_RELEASE='-O2 -DNDEBUG' -DCMAKE_RUNTIME_OUTPUT_DIRECTORY="$windows_build/shared/bin"
    cmake --build "$windows_build/shared"
    start_wine
    run_windows_tests
    test_windows_exports
    test_static_sqlite_is_refused
    pack_windows
    test_windows_zip
    stop_wine
    say "The package is ${windows_zip#"$project/"}"
}
