#!/usr/bin/env bash
# run.sh TEST BUILD: runs one of the tests below on the build directory BUILD, which the preset `package` configured.
# Copies each project that uses the libraries to a scratch directory first, outside of the project and of BUILD.
set -euo pipefail

here=$(cd -P -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
project=$(dirname -- "$(dirname -- "$here")")
build=$2
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
multiarch=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# Ignore libraries that are installed elsewhere.
unset CMAKE_PREFIX_PATH CPATH LD_LIBRARY_PATH LIBRARY_PATH PKG_CONFIG_PATH
export CMAKE_GENERATOR=Ninja

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# expect WHAT EXPECTED: compares standard input with the text EXPECTED, or with the contents of the file @EXPECTED.
expect() {
    local expected=$2
    [[ $expected != @* ]] || expected=$(<"${expected#@}")
    diff -u --label expected --label found <(printf '%s\n' "$expected") - || fail "$1: not as expected"
}

# copy PROJECT: copies it to the directory app.
copy() {
    rm -rf "$scratch/app"
    cp -r "$here/$1" "$scratch/app"
    cp "$here/main.cpp" "$scratch/app"
    cd "$scratch/app"
}

# build_with_cmake OPTION...: compiles several files as one unit, which is quicker.
build_with_cmake() {
    cmake -S . -B build -DCMAKE_UNITY_BUILD=ON "$@"
    cmake --build build
}

# works PROGRAM
works() {
    rm -f journal.db
    "$1" | expect 'The output of the program' 'Current, Veg, Basil'
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

# Prints the symbols that a shared library exports, without instances of the standard library's templates, because those
# depend on the compiler and its optimisation.
exports() {
    nm --dynamic --defined-only --format=just-symbols "$1" |
        sed -E '/^_Z(GV|TV|TT|TI|TS|Z)*(N[KVRO]*)?(St|S[absiod]|9__gnu_cxx)/d' | c++filt |
        sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g
            s/std::vector<\([A-Za-z]*\), std::allocator<\1> >/std::vector<\1>/g' | LC_ALL=C sort -u
}

# configure_static OPTION...: uses the newer name of SQLite's target. The shared libraries use the older one, unless
# CMake is new enough.
configure_static() {
    cmake -S "$project" -B "$build/static" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= -DBUILD_SHARED_LIBS=OFF \
        -DPLANTJOURNAL_BUILD_TESTS=OFF -DPLANTJOURNAL_BUILD_EXAMPLES=OFF -DPLANTJOURNAL_BUILD_TOOLS=OFF \
        -DCMAKE_UNITY_BUILD=ON -DCMAKE_MODULE_PATH="$here/newer_sqlite" "$@"
}

# install_packages PACKAGE...: installs them into the directory root, without privileges and without their dependencies.
install_packages() {
    local package files=() admin=$scratch/root/var/lib/dpkg
    for package; do
        files+=("$build/${package}_${version}"_*.deb)
    done
    mkdir -p "$admin/info" "$admin/updates" "$scratch/bin"
    touch "$admin/status"
    ln -s "$(type -P true)" "$scratch/bin/ldconfig" # the real one needs privileges
    PATH=$scratch/bin:$PATH:/usr/sbin:/sbin dpkg --root="$scratch/root" --log="$scratch/dpkg.log" \
        --force-depends --force-not-root --force-script-chrootless --install "${files[@]}"
    for package; do
        [[ $(dpkg-query --admindir="$admin" -W -f '${db:Status-Status}' "$package") == installed ]] ||
            fail "$package is not installed"
    done
}

# ---- The tests

test_each_header_compiles_alone() {
    local compiler standard header
    for compiler in g++ clang++; do
        for standard in c++17 c++20 c++2b; do # c++2b is C++23 in older compilers, too
            for header in src/plant.h src/plant_database.h file/plant_file.h query/plant_query.h report/plant_report.h \
                validation/plant_validation.h watch/plant_watcher.h; do
                printf '#include "%s"\n' "${header##*/}" |
                    "$compiler" -std=$standard -fsyntax-only -Wall -Wextra -Wpedantic -Wundef -Werror \
                        -I "$project/${header%/*}" -I "$project/src" -I "$project/query" -x c++ - || fail "$header, $compiler, $standard"
            done
        done
    done
}

test_shared_libraries_export_the_listed_symbols() {
    exports "$build/libplantjournal.so" | expect 'The exports of libplantjournal' "@$here/exports/plantjournal.txt"
    exports "$build/file/libplantjournal_file.so" |
        expect 'The exports of libplantjournal_file' "@$here/exports/plantjournal_file.txt"
    exports "$build/query/libplantjournal_query.so" |
        expect 'The exports of libplantjournal_query' "@$here/exports/plantjournal_query.txt"
    exports "$build/report/libplantjournal_report.so" |
        expect 'The exports of libplantjournal_report' "@$here/exports/plantjournal_report.txt"
    exports "$build/validation/libplantjournal_validation.so" |
        expect 'The exports of libplantjournal_validation' "@$here/exports/plantjournal_validation.txt"
    exports "$build/watch/libplantjournal_watch.so" |
        expect 'The exports of libplantjournal_watch' "@$here/exports/plantjournal_watch.txt"
}

test_shared_libraries_refuse_a_static_sqlite() {
    local sqlite=/usr/lib/$multiarch/libsqlite3.a
    local form options=(-DPLANTJOURNAL_BUILD_TESTS=OFF -DPLANTJOURNAL_BUILD_EXAMPLES=OFF
        -DPLANTJOURNAL_BUILD_TOOLS=OFF -DPLANTJOURNAL_INSTALL=OFF)
    [[ -e $sqlite ]] || fail "$sqlite does not exist"
    cd "$scratch"
    touch sqlite.cpp
    # CMake finds the library, or the parent project defines it in one of three ways.
    echo "set(SQLite3_LIBRARY $sqlite CACHE FILEPATH \"\")" >found.cmake
    echo "add_library(sqlite STATIC $scratch/sqlite.cpp)
        add_library(SQLite3::SQLite3 ALIAS sqlite)" >built.cmake
    echo "add_library(SQLite3::SQLite3 STATIC IMPORTED)
        set_target_properties(SQLite3::SQLite3 PROPERTIES IMPORTED_LOCATION $sqlite)" >imported.cmake
    echo "add_library(SQLite3::SQLite3 INTERFACE IMPORTED)
        target_link_libraries(SQLite3::SQLite3 INTERFACE $sqlite)" >interface.cmake
    for form in found built imported interface; do
        if cmake -S "$project" -B $form "${options[@]}" -DCMAKE_PROJECT_INCLUDE="$scratch/$form.cmake" \
            -DBUILD_SHARED_LIBS=ON 2>errors; then
            fail "$form: a static SQLite was accepted"
        fi
        grep -q 'SQLite is a static library' errors || fail "$form: another error: $(<errors)"
        cmake -S "$project" -B $form -DBUILD_SHARED_LIBS=OFF
    done
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

test_find_package_finds_shared_libraries() { find_package -DCMAKE_PREFIX_PATH="$build/installed/shared"; }
test_find_package_finds_static_libraries() { find_package -DCMAKE_PREFIX_PATH="$build/installed/static"; }
test_pkg_config_finds_shared_libraries() { pkg_config "$build/installed/shared/lib/$multiarch"; }
test_pkg_config_finds_static_libraries() { pkg_config "$build/installed/static/lib"; }

test_an_installation_can_be_moved() {
    cp -a "$build/installed/shared" "$scratch/moved"
    find_package -DCMAKE_PREFIX_PATH="$scratch/moved"
    pkg_config "$scratch/moved/lib/$multiarch"
    ! grep -rl "$build" "$scratch/moved" || fail 'The installation contains the path of the build directory'
}

test_the_library_directory_can_be_absolute() {
    configure_static -DCMAKE_INSTALL_PREFIX="$scratch/prefix" -DCMAKE_INSTALL_LIBDIR="$scratch/elsewhere"
    cmake --install "$build/static"
    find_package -Dplantjournal_DIR="$scratch/elsewhere/cmake/plantjournal"
    pkg_config "$scratch/elsewhere"
}

test_find_package_checks_the_version() {
    copy versions
    cmake -S . -B build -DCMAKE_PREFIX_PATH="$build/installed/static" -DPLANTJOURNAL_VERSION="$version"
}

test_add_subdirectory_adds_the_libraries() {
    copy add_subdirectory
    ln -s "$project" plantjournal
    build_with_cmake
    works build/app
    cmake --install build --prefix "$scratch/prefix"
    [[ ! -e $scratch/prefix ]] || fail 'A subproject installs files by default'
    [[ ! -e build/plantjournal/tools && ! -e build/plantjournal/tests && ! -e build/plantjournal/examples ]] ||
        fail 'A subproject builds more than its libraries by default'
}

test_a_program_can_define_the_sqlite_target() {
    copy own_sqlite
    build_with_cmake -DCMAKE_PREFIX_PATH="$build/installed/static"
    works build/app
    copy own_sqlite
    ln -s "$project" plantjournal
    build_with_cmake
    works build/app
}

test_sqlite_can_have_only_its_newer_name() {
    find_package -DCMAKE_PREFIX_PATH="$build/installed/static" -DCMAKE_MODULE_PATH="$here/newer_sqlite"
}

test_debian_packages_are_built() {
    rm -f "$build"/*.deb
    cd "$build"
    cpack
}

test_debian_packages_pass_lintian() { lintian --allow-root --fail-on error,warning "$build"/*.deb; }

test_debian_packages_contain_the_listed_files() {
    local package
    for package in libplantjournal1 libplantjournal-dev plantjournal; do
        dpkg-deb --fsys-tarfile "$build/${package}_${version}"_*.deb | tar -t |
            sed -n "s|$multiarch|MULTIARCH|; s|\.so\.$version|.so.VERSION|; s|^\.\(.*[^/]\)\$|$package \1|p"
    done | expect 'The contents of the packages' "@$here/debian_files.txt"
}

test_debian_packages_have_their_dependencies() {
    depends() { dpkg-deb -f "$build/${1}_${version}"_*.deb Depends; }
    depends libplantjournal-dev |
        expect 'The dependencies of libplantjournal-dev' "libplantjournal1 (= $version), libsqlite3-dev"
    local package
    for package in libplantjournal1 plantjournal; do
        [[ $(depends $package) == *'libsqlite3-0 (>= '*'libstdc++6 (>= '* ]] || fail "$package: no dependency"
    done
    [[ $(depends plantjournal) == "libplantjournal1 (= $version), "* ]] || fail 'plantjournal: no libraries'
    dpkg-deb -I "$build/libplantjournal1_${version}"_*.deb shlibs |
        sort | expect 'The dependencies of programs' "libplantjournal 1 libplantjournal1 (>= $version)
libplantjournal_file 1 libplantjournal1 (>= $version)
libplantjournal_query 1 libplantjournal1 (>= $version)
libplantjournal_report 1 libplantjournal1 (>= $version)
libplantjournal_validation 1 libplantjournal1 (>= $version)
libplantjournal_watch 1 libplantjournal1 (>= $version)"
}

test_a_program_builds_with_the_debian_packages() {
    install_packages libplantjournal1 libplantjournal-dev
    find_package -DCMAKE_PREFIX_PATH="$scratch/root/usr"
    pkg_config "$scratch/root/usr/lib/$multiarch"
}

test_the_command_runs_from_the_debian_packages() {
    install_packages libplantjournal1 plantjournal
    export LD_LIBRARY_PATH=$scratch/root/usr/lib/$multiarch
    cd "$scratch"
    "root/usr/bin/plantjournal" --version | expect 'The version' "plantjournal $version"
    "root/usr/bin/plantjournal" --file journal.db plant add Basil
    "root/usr/bin/plantjournal" --file journal.db plant list --json | grep -q '"Basil"' || fail 'Basil is not listed'
}

"test_$1"
