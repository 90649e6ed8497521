# What no finished file shows: each source that ships is compiled with all of these, whichever target it is in.
file(STRINGS ${BUILD}/compile_commands.json commands REGEX " -c ${SOURCE_DIR}/(src|session|host|cli)/")
# What the tests compile from such a source for themselves does not ship.
list(FILTER commands EXCLUDE REGEX " -o tests/")
if(commands STREQUAL "")
    message(FATAL_ERROR "${BUILD}/compile_commands.json compiles nothing that ships.")
endif()
set(flags -fstack-protector-strong -Werror=format-security -D_FORTIFY_SOURCE=2
    "-ffile-prefix-map=${SOURCE_DIR}=." "-ffile-prefix-map=${BUILD}=.")
if(CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL x86_64)
    list(APPEND flags -fcf-protection=full -fstack-clash-protection)
endif()

foreach(command IN LISTS commands)
    foreach(flag IN LISTS flags)
        string(FIND "${command}" " ${flag} " place)
        if(place EQUAL -1)
            message(FATAL_ERROR "${flag} is missing: sftpclient_harden its target.\n${command}")
        endif()
    endforeach()
endforeach()
