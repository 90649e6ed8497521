# Compares the symbols that a library defines for others with the list that says which it may: not one more or less.
execute_process(COMMAND ${NM} --dynamic --defined-only --demangle ${LIBRARY}
                OUTPUT_VARIABLE symbols RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${NM} cannot read ${LIBRARY}.")
endif()

# Names hold brackets, which would join the elements of a CMake list.
string(REPLACE "[" "<<" symbols "${symbols}")
string(REPLACE "]" ">>" symbols "${symbols}")
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
set(exported "")
foreach(line IN LISTS lines)
    if(NOT line MATCHES "^[0-9a-f]+ [A-Za-z] (.+)$")
        message(FATAL_ERROR "${NM} said of ${LIBRARY}: ${line}")
    endif()
    list(APPEND exported "${CMAKE_MATCH_1}")
endforeach()

file(READ ${MAP} map)
string(REPLACE "[" "<<" map "${map}")
string(REPLACE "]" ">>" map "${map}")
string(REGEX REPLACE "/\\*[^*]*\\*/" "" map "${map}")
string(REGEX MATCHALL "\"[^\"\n]+\"" quoted "${map}")
set(listed "")
foreach(name IN LISTS quoted)
    if(NOT name STREQUAL "\"C++\"")
        string(REGEX REPLACE "\"" "" name "${name}")
        list(APPEND listed "${name}")
    endif()
endforeach()
if(listed STREQUAL "" OR exported STREQUAL "")
    message(FATAL_ERROR "${MAP} lists nothing or ${LIBRARY} exports nothing.")
endif()

list(REMOVE_DUPLICATES exported)
set(missing ${listed})
list(REMOVE_ITEM missing ${exported})
set(unlisted ${exported})
list(REMOVE_ITEM unlisted ${listed})
if(missing OR unlisted)
    list(JOIN missing "\n  " missing)
    list(JOIN unlisted "\n  " unlisted)
    message(FATAL_ERROR "The library must export what its map lists.\n  library: ${LIBRARY}\n  map: ${MAP}\n"
                        "Listed, but not exported:\n  ${missing}\n"
                        "Exported, but not listed:\n  ${unlisted}\n"
                        "Hosts rely on every export: bring the library and the list together again.")
endif()
