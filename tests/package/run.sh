#!/usr/bin/env bash
# run.sh TEST BUILD: one of the tests below, of what the build directory BUILD, configured by the preset `package`, holds.
# What consumes the libraries is copied to a directory of its own first, far from the project and from BUILD.
set -euo pipefail

here=$(cd -P -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
project=$(dirname -- "$(dirname -- "$here")")
build=$2
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
multiarch=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# Nothing that is installed elsewhere may help.
unset CMAKE_PREFIX_PATH CPATH LD_LIBRARY_PATH LIBRARY_PATH PKG_CONFIG_PATH
export CMAKE_GENERATOR=Ninja

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# expect WHAT EXPECTED: standard input is to be the text EXPECTED, or what the file @EXPECTED holds.
expect() {
    local expected=$2
    [[ $expected != @* ]] || expected=$(<"${expected#@}")
    diff -u --label expected --label found <(printf '%s\n' "$expected") - || fail "$1 is not as expected"
}

# copy CONSUMER: into the directory app.
copy() {
    rm -rf "$scratch/app"
    cp -r "$here/$1" "$scratch/app"
    cp "$here/main.cpp" "$scratch/app"
    cd "$scratch/app"
}

# build_with_cmake OPTION...
build_with_cmake() {
    cmake -S . -B build "$@"
    cmake --build build
}

# works PROGRAM
works() {
    rm -f journal.db
    "$1" | expect 'What the program prints' 'Current, Veg'
}

# find_package OPTION...
find_package() {
    copy find_package
    build_with_cmake "$@"
    works build/app
}

# pkg_config LIBRARY-DIRECTORY
pkg_config() {
    copy pkg_config
    export PKG_CONFIG_PATH=$1/pkgconfig
    make
    LD_LIBRARY_PATH=$1 works ./app
}

# Prints what a shared library exports, but for the instances of the standard library's templates: which of those there
# are depends on the compiler and on how far it optimises.
exports() {
    nm --dynamic --defined-only --format=just-symbols "$1" |
        sed -E '/^_Z(GV|TV|TT|TI|TS|Z)*(N[KVRO]*)?(St|S[absiod]|9__gnu_cxx)/d' | c++filt |
        sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g
            s/std::vector<\([A-Za-z]*\), std::allocator<\1> >/std::vector<\1>/g' | LC_ALL=C sort -u
}

# configure_static OPTION...: with the newer name of SQLite's target, the older one being what the shared libraries get
# where CMake is not that new.
configure_static() {
    cmake -S "$project" -B "$build/static" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= -DBUILD_SHARED_LIBS=OFF \
        -DPLANTJOURNAL_BUILD_TESTS=OFF -DPLANTJOURNAL_BUILD_EXAMPLES=OFF -DPLANTJOURNAL_BUILD_TOOLS=OFF \
        -DCMAKE_MODULE_PATH="$here/newer_sqlite" "$@"
}

# install_packages PACKAGE...: into the directory root, as anybody; what they depend on is this machine's.
install_packages() {
    local package files=() admin=$scratch/root/var/lib/dpkg
    for package; do
        files+=("$build/${package}_${version}"_*.deb)
    done
    mkdir -p "$admin/info" "$admin/updates" "$scratch/bin"
    touch "$admin/status"
    ln -s "$(type -P true)" "$scratch/bin/ldconfig" # there is no root to keep a cache for
    PATH=$scratch/bin:$PATH:/usr/sbin:/sbin dpkg --root="$scratch/root" --log="$scratch/dpkg.log" \
        --force-depends --force-not-root --force-script-chrootless --install "${files[@]}"
    for package; do
        [[ $(dpkg-query --admindir="$admin" -W -f '${db:Status-Status}' "$package") == installed ]] ||
            fail "$package is not installed"
    done
}

# ---- The tests

test_headers_stand_alone() {
    local compiler standard header
    for compiler in g++ clang++; do
        for standard in c++17 c++20 c++2b; do # the last is C++23, as older compilers have it, too
            for header in src/plant.h src/plant_database.h file/plant_file.h; do
                printf '#include "%s"\n' "${header##*/}" |
                    "$compiler" -std=$standard -fsyntax-only -Wall -Wextra -Wpedantic -Wundef -Werror \
                        -I "$project/${header%/*}" -x c++ - || fail "$header, $compiler, $standard"
            done
        done
    done
}

test_shared_libraries_export_what_is_listed() {
    exports "$build/libplantjournal.so" | expect 'What libplantjournal exports' "@$here/exports/plantjournal.txt"
    exports "$build/file/libplantjournal_file.so" |
        expect 'What libplantjournal_file exports' "@$here/exports/plantjournal_file.txt"
}

test_install_shared() {
    rm -rf "$build/installed/shared"
    cmake --install "$build" --prefix "$build/installed/shared"
}

test_install_static() {
    rm -rf "$build/installed/static"
    configure_static -DCMAKE_INSTALL_LIBDIR=lib
    cmake --build "$build/static"
    cmake --install "$build/static" --prefix "$build/installed/static"
}

test_find_package_serves_shared() { find_package -DCMAKE_PREFIX_PATH="$build/installed/shared"; }
test_find_package_serves_static() { find_package -DCMAKE_PREFIX_PATH="$build/installed/static"; }
test_pkg_config_serves_shared() { pkg_config "$build/installed/shared/lib/$multiarch"; }
test_pkg_config_serves_static() { pkg_config "$build/installed/static/lib"; }

test_installation_may_be_moved() {
    cp -a "$build/installed/shared" "$scratch/moved"
    find_package -DCMAKE_PREFIX_PATH="$scratch/moved"
    pkg_config "$scratch/moved/lib/$multiarch"
    ! grep -rl "$build" "$scratch/moved" || fail 'They tell where they were built'
}

test_library_directory_may_be_absolute() {
    configure_static -DCMAKE_INSTALL_PREFIX="$scratch/prefix" -DCMAKE_INSTALL_LIBDIR="$scratch/elsewhere"
    cmake --install "$build/static"
    find_package -Dplantjournal_DIR="$scratch/elsewhere/cmake/plantjournal"
    pkg_config "$scratch/elsewhere"
}

test_version_must_fit() {
    copy versions
    cmake -S . -B build -DCMAKE_PREFIX_PATH="$build/installed/static" -DPLANTJOURNAL_VERSION="$version"
}

test_add_subdirectory_serves() {
    copy add_subdirectory
    ln -s "$project" plantjournal
    build_with_cmake
    works build/app
    cmake --install build --prefix "$scratch/prefix"
    [[ ! -e $scratch/prefix ]] || fail 'A project within another installs something unasked'
    [[ ! -e build/plantjournal/tools && ! -e build/plantjournal/tests && ! -e build/plantjournal/examples ]] ||
        fail 'A project within another builds more than its libraries unasked'
}

test_sqlite_may_be_a_target_of_the_program() {
    copy own_sqlite
    build_with_cmake -DCMAKE_PREFIX_PATH="$build/installed/static"
    works build/app
    copy own_sqlite
    ln -s "$project" plantjournal
    build_with_cmake
    works build/app
}

test_sqlite_may_have_its_newer_name_only() {
    find_package -DCMAKE_PREFIX_PATH="$build/installed/static" -DCMAKE_MODULE_PATH="$here/newer_sqlite"
}

test_debian_packages_are_made() {
    rm -f "$build"/*.deb
    cd "$build"
    cpack
}

test_debian_packages_pass_lintian() { lintian --allow-root --fail-on error,warning "$build"/*.deb; }

test_debian_packages_hold_what_is_listed() {
    local package
    for package in libplantjournal1 libplantjournal-dev plantjournal; do
        dpkg-deb --fsys-tarfile "$build/${package}_${version}"_*.deb | tar -t |
            sed -n "s|$multiarch|MULTIARCH|; s|\.so\.$version|.so.VERSION|; s|^\.\(.*[^/]\)\$|$package \1|p"
    done | expect 'What the packages hold' "@$here/debian_files.txt"
}

test_debian_packages_depend_on_what_they_need() {
    depends() { dpkg-deb -f "$build/${1}_${version}"_*.deb Depends; }
    depends libplantjournal-dev | expect 'What the headers depend on' "libplantjournal1 (= $version), libsqlite3-dev"
    local package
    for package in libplantjournal1 plantjournal; do
        [[ $(depends $package) == *'libsqlite3-0 (>= '*'libstdc++6 (>= '* ]] || fail "$package depends on too little"
    done
    [[ $(depends plantjournal) == "libplantjournal1 (= $version), "* ]] || fail 'The command lacks its libraries'
    dpkg-deb -I "$build/libplantjournal1_${version}"_*.deb shlibs |
        sort | expect 'What programs will depend on' "libplantjournal 1 libplantjournal1 (>= $version)
libplantjournal_file 1 libplantjournal1 (>= $version)"
}

test_debian_packages_serve_a_program() {
    install_packages libplantjournal1 libplantjournal-dev
    find_package -DCMAKE_PREFIX_PATH="$scratch/root/usr"
    pkg_config "$scratch/root/usr/lib/$multiarch"
}

test_debian_packages_serve_the_command() {
    install_packages libplantjournal1 plantjournal
    export LD_LIBRARY_PATH=$scratch/root/usr/lib/$multiarch
    cd "$scratch"
    "root/usr/bin/plantjournal" --version | expect 'The version' "plantjournal $version"
    "root/usr/bin/plantjournal" --file journal.db plant add Basil
    "root/usr/bin/plantjournal" --file journal.db plant list --json | grep -q '"Basil"' || fail 'Basil is lost'
}

"test_$1"
