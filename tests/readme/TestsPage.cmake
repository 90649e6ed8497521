# The page about the tests must name every folder of tests, every label that ctest knows and every gate, and neither
# link to nor name a source of tests that is not there.
cmake_minimum_required(VERSION 3.25)

set(page ${SOURCE_DIR}/tests/README.md)
file(READ ${page} text)
set(wrong "")

function(expect_on_page what name written)
    string(FIND "${text}" "${written}" position)
    if(position EQUAL -1)
        list(APPEND wrong "It does not name the ${what} ${name}: ${written}")
        set(wrong "${wrong}" PARENT_SCOPE)
    endif()
endfunction()

file(GLOB folders RELATIVE ${SOURCE_DIR}/tests LIST_DIRECTORIES true ${SOURCE_DIR}/tests/*)
list(FILTER folders EXCLUDE REGEX "\\.")
foreach(folder IN LISTS folders)
    expect_on_page(folder ${folder} "\n| [${folder}/](${folder})")
endforeach()

execute_process(COMMAND ${CTEST} --test-dir ${BINARY_DIR} --print-labels
                OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^.*All Labels:" "" printed "${printed}")
string(REGEX MATCHALL "[^ \n]+" labels "${printed}")
foreach(label IN LISTS labels)
    expect_on_page(label ${label} ") | `${label}` |")
endforeach()

file(GLOB gates RELATIVE ${SOURCE_DIR}/scripts/gates ${SOURCE_DIR}/scripts/gates/*)
foreach(gate IN LISTS gates)
    expect_on_page(gate ${gate} "\n| `${gate}` |")
endforeach()

# Brackets would join the elements of a CMake list.
string(REPLACE "](" "<<" linked "${text}")
string(REGEX MATCHALL "<<[^)]+" links "${linked}")
list(TRANSFORM links REPLACE "^<<" "")
foreach(link IN LISTS links)
    if(NOT EXISTS ${SOURCE_DIR}/tests/${link})
        list(APPEND wrong "It links to ${link}, which is not there.")
    endif()
endforeach()

file(GLOB_RECURSE sources ${SOURCE_DIR}/tests/*.cpp)
list(TRANSFORM sources REPLACE "^.*/([^/]+)\\.cpp$" "\\1")
string(REGEX MATCHALL "[A-Za-z]+(Test|Contract|Live|Calls|Rows|AtOnce)`" named "${text}")
foreach(name IN LISTS named)
    string(REPLACE "`" "" name ${name})
    if(NOT name IN_LIST sources)
        list(APPEND wrong "It names ${name}, which is no source of tests.")
    endif()
endforeach()

foreach(things IN ITEMS folders labels gates links named)
    if("${${things}}" STREQUAL "")
        message(FATAL_ERROR "${page} was looked through for no ${things} at all.")
    endif()
endforeach()
if(wrong)
    list(JOIN wrong "\n  " wrong)
    message(FATAL_ERROR "${page} must tell of all tests and gates.\n  ${wrong}")
endif()
