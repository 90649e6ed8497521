# Installs the build below PREFIX, where the other tests look for it, and compares the installed files with the list.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

file(GLOB_RECURSE found LIST_DIRECTORIES false RELATIVE ${PREFIX} ${PREFIX}/*)
# Each build type has a file of its own for the places of the libraries.
list(TRANSFORM found REPLACE "Targets-[a-z]+\\.cmake$" "Targets-TYPE.cmake")
list(SORT found)

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/installed.txt expected REGEX "^[^#]")
list(TRANSFORM expected REPLACE "LIBDIR" "${LIBDIR}")
list(TRANSFORM expected REPLACE "VERSION" "${VERSION}")
list(SORT expected)

if(NOT found STREQUAL expected)
    set(missing ${expected})
    list(REMOVE_ITEM missing ${found})
    set(unlisted ${found})
    list(REMOVE_ITEM unlisted ${expected})
    list(JOIN missing "\n  " missing)
    list(JOIN unlisted "\n  " unlisted)
    message(FATAL_ERROR "What is installed differs from installed.txt.\nListed, but not installed:\n  ${missing}\n"
                        "Installed, but not listed:\n  ${unlisted}")
endif()
