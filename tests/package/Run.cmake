# What the scripts of this folder share: a command that must succeed, and what a consumer must print.

# With their full names the sources are the same from the folder of each project, so that a compiler's cache, where
# there is one, has each of them compiled once.
unset(ENV{CCACHE_BASEDIR})

function(must_succeed)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(failed)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}\nended with ${failed}:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# The consumers ask for a listing of a URL that libcurl does not know, so that the call goes all the way through the
# library and both its peers without a server.
function(must_ask_and_log program services)
    execute_process(COMMAND ${program} RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE records)
    if(failed OR NOT output STREQUAL "1 Unsupported protocol\n")
        message(FATAL_ERROR "${program} ended with ${failed} and printed:\n${output}${records}")
    endif()
    if(NOT records MATCHES "${services}")
        message(FATAL_ERROR "${program} wrote no record through ${services}:\n${records}")
    endif()
endfunction()

set(kReadyServices " error SFtpClient request=0 SFtpClient::Listsftpdir\\(\\):[0-9]+ ")
set(kOwnServices "own record: 4 SFtpClient 7 [A-Za-z]+::Listsftpdir\\(\\) ")

function(compile program source flags)
    string(STRIP "${flags}" flags)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    if(SANITIZE)
        # Programs and libraries share one runtime.
        list(APPEND flags -fsanitize=${SANITIZE})
    endif()
    file(MAKE_DIRECTORY ${SCRATCH})
    must_succeed(${COMPILER} -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Werror
                 -o ${program} ${CMAKE_CURRENT_LIST_DIR}/consumers/${source} ${flags})
endfunction()

function(ask_pkg_config result)
    set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
    must_succeed(pkg-config ${ARGN})
    set(${result} "${output}" PARENT_SCOPE)
endfunction()
