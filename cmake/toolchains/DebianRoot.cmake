# For the toolchain file of an architecture, which names `architecture`, as Debian does, and `machine`, as g++ does: a
# build with Debian's cross compiler against packages of that architecture, unpacked into build/roots by
# scripts/processors.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${machine}-g++)
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH root)
cmake_path(GET root PARENT_PATH root)
set(CMAKE_SYSROOT ${root}/build/roots/${architecture})
if(NOT EXISTS ${CMAKE_SYSROOT})
    message(FATAL_ERROR "There are no packages in ${CMAKE_SYSROOT}; scripts/processors ${architecture} unpacks them.")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
