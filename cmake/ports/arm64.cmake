# Builds for 64-bit ARM. QEMU runs the programs.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(debian_architecture arm64)
set(gnu_triplet aarch64-linux-gnu)
set(multiarch_triplet aarch64-linux-gnu)
set(program_loader /lib/ld-linux-aarch64.so.1)
include(${CMAKE_CURRENT_LIST_DIR}/debian_root.cmake)

# Each program becomes a script that starts QEMU, because the tests start other programs. CMake's own checks read the
# program file.
get_property(is_check GLOBAL PROPERTY IN_TRY_COMPILE)
if(NOT is_check)
    set(CMAKE_CXX_LINK_EXECUTABLE
        "<CMAKE_CXX_COMPILER> <FLAGS> <CMAKE_CXX_LINK_FLAGS> <LINK_FLAGS> <OBJECTS> -o <TARGET>.arm64 <LINK_LIBRARIES>"
        "${CMAKE_CURRENT_LIST_DIR}/qemu_script.sh <TARGET>")
endif()
