# Each header that hosts see compiles alone, twice over, without a warning, whatever the compiler and the standard. The
# public ones bring nothing of libcurl or OpenSSL along; the engine's may.
file(GLOB headers ${SOURCE_DIR}/include/*.h ${SOURCE_DIR}/platform/*.h)
list(LENGTH headers count)
if(count LESS 7)
    message(FATAL_ERROR "Only ${count} headers in ${SOURCE_DIR}/include and ${SOURCE_DIR}/platform.")
endif()
set(engine ${SOURCE_DIR}/src/transfer/CurlSFtpClient.h ${SOURCE_DIR}/src/transfer/CurlSFtpResponse.h
    ${SOURCE_DIR}/src/transfer/SftpWriteData.h ${SOURCE_DIR}/src/tls/TlsTrust.h ${SOURCE_DIR}/src/log/GetFunctionName.h)

if(COMPILER MATCHES "NOTFOUND$")
    message(FATAL_ERROR "clang++ is missing, and the headers must compile with it too; scripts/setup gates installs it.")
endif()

# Whether a file compiles as a standard; `includes` gets what of libcurl and OpenSSL it includes.
function(compile name standard includes)
    execute_process(
        COMMAND ${COMPILER} -std=c++${standard} -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Werror
                -I${SOURCE_DIR}/include -I${SOURCE_DIR}/platform ${SCRATCH}/${name}.cpp -MD -MF ${SCRATCH}/${name}.d
        RESULT_VARIABLE failed ERROR_VARIABLE errors)
    if(failed)
        message(FATAL_ERROR "${name} does not compile as C++${standard} with ${COMPILER}:\n${errors}")
    endif()
    file(STRINGS ${SCRATCH}/${name}.d foreign REGEX "/include/([^ ]*/)?(curl|openssl)/")
    set(${includes} "${foreign}" PARENT_SCOPE)
endfunction()

set(all "")
foreach(header IN LISTS headers engine)
    get_filename_component(name ${header} NAME)
    file(WRITE ${SCRATCH}/${name}.cpp "#include \"${header}\"\n#include \"${header}\"\n")
    string(APPEND all "#include \"${header}\"\n")
    list(FIND engine ${header} place)
    # As C++17, the standard library's headers include least of each other, so that a missing one shows.
    compile(${name} 17 foreign)
    if(foreign AND place EQUAL -1)
        message(FATAL_ERROR "${name} includes what hosts need not have:\n${foreign}")
    endif()
endforeach()

# The newer standards, once for all headers.
file(WRITE ${SCRATCH}/all-headers.cpp "${all}")
foreach(standard 20 2b)
    compile(all-headers ${standard} ignored)
endforeach()
