# Compares what a library leaves to its host with the list of host services. A symbol that one of the linked libraries
# supplies carries that library's version; one that is undefined and has no version can come only from the host.
execute_process(COMMAND ${NM} --dynamic --undefined-only --demangle ${LIBRARY}
                OUTPUT_VARIABLE symbols RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${NM} cannot read ${LIBRARY}.")
endif()

string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
set(found "")
foreach(symbol IN LISTS symbols)
    if(symbol MATCHES "^ +U ([^@]+)$")
        list(APPEND found "${CMAKE_MATCH_1}")
    endif()
endforeach()
list(SORT found)
list(REMOVE_DUPLICATES found)

file(STRINGS ${EXPECTED} expected)
if(NOT found STREQUAL expected)
    list(JOIN found "\n  " found)
    list(JOIN expected "\n  " expected)
    file(REMOVE ${LIBRARY})
    message(FATAL_ERROR "The library must leave exactly the host services undefined.\n"
                        "  library: ${LIBRARY}\n  list: ${EXPECTED}\n"
                        "The list has\n  ${expected}\nbut the library leaves\n  ${found}")
endif()
