# 32 bits. Its programs run as they are, with the loader and the libraries of the unpacked packages.
set(architecture i386)
set(machine i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/DebianRoot.cmake)
# Old tags: libraries that those libraries need are found as well.
string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT
       "-Wl,--dynamic-linker=${CMAKE_SYSROOT}/lib/ld-linux.so.2,--disable-new-dtags"
       ",-rpath,${CMAKE_SYSROOT}/lib/i386-linux-gnu:${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu")
# A library with a path of its own and new tags would not look where the program says.
set(CMAKE_SHARED_LINKER_FLAGS_INIT -Wl,--disable-new-dtags)
