# Builds for 64-bit ARM. QEMU runs the programs.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(debian_architecture arm64)
set(gnu_triplet aarch64-linux-gnu)
set(multiarch_triplet aarch64-linux-gnu)
set(program_loader /lib/ld-linux-aarch64.so.1)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian_root.cmake)
