# Builds for 32-bit x86. An x86-64 system runs the programs.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(debian_architecture i386)
set(gnu_triplet i686-linux-gnu)
set(multiarch_triplet i386-linux-gnu)
set(program_loader /lib/ld-linux.so.2)
include(${CMAKE_CURRENT_LIST_DIR}/debian_root.cmake)
