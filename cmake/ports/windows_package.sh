# Packs the Windows build and tests the package.

mingw_file() { x86_64-w64-mingw32-g++-posix -print-file-name="$1"; }

# The name of the directory in the .zip
windows_package_name() {
    [[ $(<CMakeLists.txt) =~ project\(plantjournal[[:space:]]+VERSION[[:space:]]+([0-9.]+) ]]
    echo "plantjournal-${BASH_REMATCH[1]}-windows-x86_64"
}

# windows_exports IMPORT-LIBRARY: prints the symbols that its DLL exports, in the form of tests/package/exports/. On
# Windows, std::int64_t is long long.
windows_exports() {
    x86_64-w64-mingw32-nm --defined-only --format=just-symbols "$1" 2>/dev/null | sed -n 's/^__imp_//p' |
        sed -E '/^_Z(GV|TV|TT|TI|TS|Z)*(N[KVRO]*)?(St|S[absiod]|9__gnu_cxx)/d' | c++filt |
        sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g
            s/std::vector<\([A-Za-z]*\), std::allocator<\1> >/std::vector<\1>/g; s/long long/long/g' | LC_ALL=C sort -u
}

# Compares the exports of each DLL with the list of its symbols.
test_windows_exports() {
    local list name
    for list in tests/package/exports/*.txt; do
        name=$(basename "$list" .txt)
        windows_exports "$(find "$windows_build/shared" -name "lib$name.dll.a")" |
            diff -u --label "$list" --label "lib$name.dll" "$list" - ||
            fail "windows: the exports of lib$name.dll differ from $list"
    done
    say 'The DLLs export the listed symbols'
}

test_static_sqlite_is_refused() {
    local directory=$windows_build/static-sqlite output
    rm -rf "$directory"
    mkdir -p "$directory"
    : >"$directory/libsqlite3.a"
    if output=$(cmake -S . -B "$directory/build" -G Ninja --toolchain "$project/cmake/ports/windows.cmake" \
        -DBUILD_SHARED_LIBS=ON -DPLANTJOURNAL_BUILD_TESTS=OFF -DSQLite3_LIBRARY="$directory/libsqlite3.a" 2>&1); then
        fail 'windows: a static SQLite was accepted for DLLs'
    fi
    [[ $output == *'SQLite is a static library'* ]] || fail "windows: another error for a static SQLite: $output"
}

# copy_windows_libraries PACKAGE: the DLLs that the command and the libraries need, and what programs need that use
# NativeHandle.
copy_windows_libraries() {
    cp "$(mingw_file libstdc++-6.dll)" "$(mingw_file libgcc_s_seh-1.dll)" \
        /usr/x86_64-w64-mingw32/lib/libwinpthread-1.dll "$windows_build"/prefix/bin/*.dll "$1/bin"
    cp "$windows_build/prefix/lib/libsqlite3.dll.a" "$1/lib"
    cp "$windows_build/prefix/include/sqlite3.h" "$1/include"
}

# copy_windows_licences PACKAGE: of the project and of all that is packed.
copy_windows_licences() {
    local source name
    mkdir "$1/licences"
    cp LICENSE "$1/licences/plantjournal.txt"
    for source in "${windows_sources[@]}"; do
        [[ $source == expat ]] || # only for tests
            cp "$windows_build/sources/$source"-*/debian/copyright "$1/licences/$source.txt"
    done
    for name in libcli11-dev:CLI11 nlohmann-json3-dev:nlohmann-json libstb-dev:stb mingw-w64-x86-64-dev:mingw-w64 \
        gcc-mingw-w64-base:gcc; do
        cp "/usr/share/doc/${name%:*}/copyright" "$1/licences/${name#*:}.txt"
    done
    cp /usr/share/common-licenses/{GPL-3,LGPL-2.1} "$1/licences"
}

# Packs the shared libraries and the command.
pack_windows() {
    local name package
    name=$(windows_package_name)
    package=$windows_build/$name
    rm -rf "$package" "$package.zip"
    quietly cmake --install "$windows_build/shared" --prefix "$package" --strip
    copy_windows_libraries "$package"
    copy_windows_licences "$package"
    cp README.md CHANGELOG.md "$package"
    cp docs/windows.md "$package/WINDOWS.md"
    (cd "$windows_build" && zip -qr "$name.zip" "$name")
    windows_zip=$package.zip
}

# build_with_windows_zip PACKAGE SOURCE BUILD: builds a program with the unpacked .zip alone.
build_with_windows_zip() {
    quietly cmake -G Ninja -S "$2" -B "$3" --toolchain "$project/cmake/ports/windows.cmake" \
        -Dplantjournal_DIR="$1/lib/cmake/plantjournal" -DSQLite3_INCLUDE_DIR="$1/include" \
        -DSQLite3_LIBRARY="$1/lib/libsqlite3.dll.a"
    quietly cmake --build "$3"
}

# Runs two programs that are built with the .zip, and the command, with the DLLs of the .zip alone.
test_windows_zip() {
    local scratch=$windows_build/consumer package output
    rm -rf "$scratch"
    mkdir -p "$scratch"
    (cd "$scratch" && unzip -q "$windows_zip")
    package=$scratch/$(windows_package_name)
    cp -r tests/package/find_package "$scratch/app"
    cp tests/package/main.cpp "$scratch/app"
    build_with_windows_zip "$package" "$scratch/app" "$scratch/build"
    build_with_windows_zip "$package" tests/package/native_handle "$scratch/native_handle"
    (
        cd "$scratch" || exit
        export PLANTJOURNAL_DLLS=$package/bin
        output=$("$project/cmake/ports/wine.sh" "$scratch/build/app.exe" | tr -d '\r')
        [[ $output == 'Current, Veg, Basil' ]] || fail "windows: the program of the .zip printed: $output"
        output=$("$project/cmake/ports/wine.sh" "$scratch/native_handle/native_handle.exe" | tr -d '\r')
        [[ $output == 'plants: 1' ]] || fail "windows: the program that uses NativeHandle printed: $output"
        output=$("$project/cmake/ports/wine.sh" "$package/bin/plantjournal.exe" --file journal.db plant list --quiet)
        [[ -n $output ]] || fail 'windows: the command of the .zip does not list the plant of the program'
    )
    say 'Programs that use the libraries of the .zip run'
}
