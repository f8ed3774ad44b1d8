# Builds for 64-bit Windows with mingw-w64. Wine runs the programs. ./dev windows builds the libraries that are needed in
# build/windows/prefix.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(prefix ${CMAKE_CURRENT_LIST_DIR}/../../build/windows/prefix)
cmake_path(NORMAL_PATH prefix)
set(CMAKE_FIND_ROOT_PATH ${prefix} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_PREFIX_PATH /) # below each of these roots
set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/lib/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine.sh)
