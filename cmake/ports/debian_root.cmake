# Builds for another architecture of Debian, with the packages that ./dev cross has unpacked in build/cross/ARCHITECTURE/
# root. The file that includes this one sets debian_architecture, gnu_triplet, multiarch_triplet and
# program_loader.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${gnu_triplet}-g++)

set(root ${CMAKE_CURRENT_LIST_DIR}/../../build/cross/${debian_architecture}/root)
cmake_path(NORMAL_PATH root)
set(CMAKE_SYSROOT ${root})
set(CMAKE_LIBRARY_ARCHITECTURE ${multiarch_triplet})
set(CMAKE_FIND_ROOT_PATH ${root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${root}/usr/lib/${multiarch_triplet}/pkgconfig:${root}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${root})

# The programs run on this system with the libraries of the other one. The paths also apply to the libraries that these
# libraries need.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--dynamic-linker=${root}${program_loader} -Wl,--disable-new-dtags \
-Wl,-rpath,${root}/usr/lib/${multiarch_triplet}:${root}/lib/${multiarch_triplet}")

# Without an emulator, CMake passes the name of a target to the shell where a command should run the program.
set(CMAKE_CROSSCOMPILING_EMULATOR env)
