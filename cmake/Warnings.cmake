# Warnings for our own targets only: a consumer compiles our headers with whatever it likes.
function(sftpclient_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                           -Wnon-virtual-dtor -Woverloaded-virtual)
    if(SFTPCLIENT_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # In instrumented code g++ takes even the standard library's variables for uninitialized.
        target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13 AND CMAKE_CXX_STANDARD GREATER 17)
        # From C++20 on, g++ 12 reports each `"text" + std::string` whose inlining it cannot follow.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(SFTPCLIENT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
