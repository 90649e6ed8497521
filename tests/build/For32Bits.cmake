# The library on a machine of 32 bits: its sources compile there without a warning, and what exports.map lists is exported,
# whatever size_t is. Its libraries are not needed for that, only their headers, which are this machine's.
if(COMPILER32 MATCHES "NOTFOUND$")
    message(FATAL_ERROR "i686-linux-gnu-g++ is missing; scripts/setup gates installs it.")
endif()
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})

# A folder at a time, because most of the time goes into headers.
set(units "")
foreach(folder facade log tls transfer)
    file(GLOB sources ${SOURCE_DIR}/src/${folder}/*.cpp)
    list(TRANSFORM sources REPLACE "^(.+)$" "#include \"\\1\"")
    list(JOIN sources "\n" content)
    file(WRITE ${SCRATCH}/${folder}.cpp "${content}\n")
    list(APPEND units ${SCRATCH}/${folder}.cpp)
endforeach()

set(foreign "")
foreach(directory IN LISTS INCLUDES)
    list(APPEND foreign -idirafter ${directory})
endforeach()
execute_process(
    COMMAND ${COMPILER32} -std=c++17 -O0 -fPIC -fvisibility=hidden -fvisibility-inlines-hidden
            -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Werror
            -I${SOURCE_DIR}/include -I${SOURCE_DIR}/src -I${SOURCE_DIR}/platform ${foreign}
            -shared -Wl,--version-script=${SOURCE_DIR}/src/exports.map -o ${SCRATCH}/libSFtpClient.so ${units}
    RESULT_VARIABLE failed ERROR_VARIABLE errors)
if(failed)
    message(FATAL_ERROR "The library does not build for 32 bits:\n${errors}")
endif()

set(LIBRARY ${SCRATCH}/libSFtpClient.so)
set(MAP ${SOURCE_DIR}/src/exports.map)
include(${CMAKE_CURRENT_LIST_DIR}/CheckExports.cmake)
