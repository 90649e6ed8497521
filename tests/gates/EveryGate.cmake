# CI runs each gate, and each has at least one canary.
cmake_minimum_required(VERSION 3.25)

set(watched "")
foreach(planting IN LISTS PLANTINGS)
    file(STRINGS ${planting} gate REGEX "^gate: ")
    string(REGEX MATCH "scripts/[a-z/-]+" gate "${gate}")
    list(APPEND watched ${gate})
endforeach()

file(GLOB gates RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/scripts/test ${SOURCE_DIR}/scripts/gates/*)
if(gates STREQUAL "")
    message(FATAL_ERROR "There are no gates in ${SOURCE_DIR}/scripts/gates.")
endif()

file(READ ${SOURCE_DIR}/.ci/run ci)
foreach(gate IN LISTS gates)
    if(NOT ci MATCHES "\n(run |scripts/[^\n]* )?${gate}[ \n]")
        message(FATAL_ERROR "CI does not run ${gate}. Add it to .ci/run.")
    endif()
endforeach()

list(REMOVE_ITEM gates scripts/gates/canaries)
list(REMOVE_ITEM gates ${watched})
if(gates)
    list(JOIN gates ", " gates)
    message(FATAL_ERROR "Nothing shows that these can fail: ${gates}. Add a planting to tests/gates/plantings.")
endif()
