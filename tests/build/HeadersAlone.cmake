# Each header that hosts see compiles alone, twice over, without a warning, whatever the compiler and the standard.
file(GLOB headers ${SOURCE_DIR}/include/*.h ${SOURCE_DIR}/platform/*.h)
list(LENGTH headers count)
if(count LESS 7)
    message(FATAL_ERROR "Only ${count} headers in ${SOURCE_DIR}/include and ${SOURCE_DIR}/platform.")
endif()

foreach(compiler IN LISTS COMPILERS)
    if(compiler MATCHES "NOTFOUND$")
        message(FATAL_ERROR "clang++ is missing, and the headers must compile with it too; scripts/setup gates installs it.")
    endif()
    foreach(header IN LISTS headers)
        get_filename_component(name ${header} NAME)
        file(WRITE ${SCRATCH}/${name}.cpp "#include <${name}>\n#include <${name}>\n")
        foreach(standard 17 20)
            execute_process(
                COMMAND ${compiler} -std=c++${standard} -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Werror
                        -I${SOURCE_DIR}/include -I${SOURCE_DIR}/platform ${SCRATCH}/${name}.cpp
                RESULT_VARIABLE failed ERROR_VARIABLE errors)
            if(failed)
                message(FATAL_ERROR "${name} does not compile alone as C++${standard} with ${compiler}:\n${errors}")
            endif()
        endforeach()
    endforeach()
endforeach()
