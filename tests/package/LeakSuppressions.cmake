# LeakSanitizer reports what each rename and delete leaves behind; with the installed file it does not, but it still
# reports the host's own leaks.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

ask_pkg_config(flags --cflags --libs sftpclient libcurl)
compile(${SCRATCH}/leaking leaking.cpp "${flags} -g -fsanitize=address -Wl,-rpath,${PREFIX}/${LIBDIR}")

function(must_lose status lost options) # ARGUMENT...
    execute_process(COMMAND ${CMAKE_COMMAND} -E env LSAN_OPTIONS=exitcode=23:${options} ${SCRATCH}/leaking ${ARGN}
                    RESULT_VARIABLE ended OUTPUT_VARIABLE output ERROR_VARIABLE said)
    string(REGEX MATCHALL "Direct leak of [0-9]+" found "${said}")
    if(NOT ended STREQUAL status OR NOT output STREQUAL "1 1\n" OR NOT found STREQUAL lost)
        message(FATAL_ERROR "With LSAN_OPTIONS=${options}, \"leaking ${ARGN}\" ended with ${ended} and printed:\n"
                            "${output}${said}")
    endif()
endfunction()

# As docs/using.md has them.
set(options suppressions=${PREFIX}/share/sftpclient/lsan.supp:fast_unwind_on_malloc=0)
file(READ ${SOURCE_DIR}/docs/using.md guide)
string(REPLACE ${PREFIX} /usr documented ${options})
string(FIND "${guide}" "`LSAN_OPTIONS=${documented}`" place)
if(place EQUAL -1)
    message(FATAL_ERROR "docs/using.md does not say: LSAN_OPTIONS=${documented}")
endif()

must_lose(23 "Direct leak of 16;Direct leak of 16" fast_unwind_on_malloc=0)
must_lose(0 "" ${options})
must_lose(23 "Direct leak of 4321" ${options} lost)
