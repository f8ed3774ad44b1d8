# Builds the libraries that the Windows build needs, from the sources of Debian's packages, in build/windows/prefix.

windows_sources=(sqlite3 utf8proc libexif expat)
mingw_cc=x86_64-w64-mingw32-gcc-posix
mingw_ar=x86_64-w64-mingw32-ar

# built NAME COMMAND...: runs the command in build/windows/sources, unless it has succeeded before.
built() {
    local mark=$project/build/windows/$1.built
    [[ ! -e $mark ]] || return 0
    say "Building $1 for Windows"
    (cd "$project/build/windows/sources" && quietly "${@:2}")
    : >"$mark"
}

# An SQLite as a DLL, with the options of Debian's own.
windows_sqlite() {
    set -e
    local prefix=$1 flags
    cd sqlite3-*/
    flags=$(sed -n '/^export CFLAGS/,/[^\\]$/p' debian/rules | grep -o -- '-DSQLITE_[A-Z0-9_]*\(=[0-9]*\)\?' | tr '\n' ' ')
    [[ -n $flags ]]
    [[ -e configure ]] || autoreconf -i
    ./configure --disable-tcl
    make sqlite3.c
    # The options are several words.
    $mingw_cc -O2 -fno-strict-aliasing $flags -shared -static-libgcc sqlite3.c -o "$prefix/bin/libsqlite3.dll" \
        -Wl,--out-implib,"$prefix/lib/libsqlite3.dll.a"
    cp sqlite3.h src/sqlite3ext.h "$prefix/include"
}

# pkg_config_file PREFIX NAME LIBRARY FLAGS
pkg_config_file() {
    printf 'prefix=%s\nName: %s\nDescription: %s\nVersion: 1\nLibs: -L${prefix}/lib -l%s\nCflags: -I${prefix}/include %s\n' \
        "$1" "$2" "$2" "$3" "$4" >"$1/lib/pkgconfig/$2.pc"
}

windows_utf8proc() {
    set -e
    cd utf8proc-*/
    $mingw_cc -O2 -DUTF8PROC_STATIC -c utf8proc.c
    $mingw_ar rcs "$1/lib/libutf8proc.a" utf8proc.o
    cp utf8proc.h "$1/include"
    pkg_config_file "$1" libutf8proc utf8proc -DUTF8PROC_STATIC
}

# A DLL, so that users can replace it, as its licence demands
windows_libexif() {
    set -e
    local file
    cd libexif-*/
    printf '#define GETTEXT_PACKAGE "libexif"\n#define LOCALEDIR "."\n' >config.h
    printf '#include <stdint.h>\n' >libexif/_stdint.h
    rm -rf objects
    mkdir -p objects "$1/include/libexif"
    for file in libexif/*.c libexif/*/*.c; do
        $mingw_cc -O2 -I. -Ilibexif -c "$file" -o "objects/${file//\//_}.o"
    done
    $mingw_cc -shared -static-libgcc objects/*.o -o "$1/bin/libexif-12.dll" -Wl,--out-implib,"$1/lib/libexif.dll.a"
    cp libexif/*.h "$1/include/libexif"
    pkg_config_file "$1" libexif exif ''
}

# windows_cmake PREFIX SOURCE OPTION...
windows_cmake() {
    set -e
    local build
    build=$project/build/windows/$(basename "$2")
    cmake -G Ninja -S "$2" -B "$build" --toolchain "$project/cmake/ports/windows.cmake" -DCMAKE_BUILD_TYPE=Release \
        -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$1" "${@:3}"
    cmake --build "$build" --target install
}

# Debian's patches need a value of XML_DTD, which CMake's configuration does not give.
windows_expat() {
    set -e
    sed -i 's/^#cmakedefine XML_DTD$/& 1/' expat-*/expat/expat_config.h.cmake
    windows_cmake "$1" "$(echo "$PWD"/expat-*/expat)" -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF \
        -DEXPAT_BUILD_TESTS=OFF -DEXPAT_SHARED_LIBS=OFF
}

windows_libraries() {
    local directory=$project/build/windows prefix=$project/build/windows/prefix source
    mkdir -p "$directory/sources" "$prefix"/{bin,include,lib/pkgconfig,share/cmake}
    if [[ ! -e $directory/sources.built ]]; then
        say 'Fetching the sources of the libraries'
        private_apt "$directory/apt"
        for source in "${windows_sources[@]}"; do
            (cd "$directory/sources" && unpack_source "$source")
        done
        unset APT_CONFIG
        : >"$directory/sources.built"
    fi
    built sqlite windows_sqlite "$prefix"
    built utf8proc windows_utf8proc "$prefix"
    built libexif windows_libexif "$prefix"
    built expat windows_expat "$prefix"
    built googletest windows_cmake "$prefix" /usr/src/googletest -DBUILD_GMOCK=OFF
    # These consist of headers.
    cp -r /usr/include/CLI /usr/include/nlohmann /usr/include/stb "$prefix/include"
    cp -r /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json "$prefix/share/cmake"
}
