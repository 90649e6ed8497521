# What Debian builds its packages with (dpkg-buildflags, hardening=+all), for what ships. In a consumer's build the
# consumer's flags count alone, and an instrumented build has aims of its own.
if(PROJECT_IS_TOP_LEVEL AND NOT SFTPCLIENT_SANITIZE AND NOT SFTPCLIENT_COVERAGE)
    set(harden ON)
else()
    set(harden OFF)
endif()
option(SFTPCLIENT_HARDENING "Harden what ships, and leave the folders of the build out of it" ${harden})

if(SFTPCLIENT_HARDENING)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    # A compiler's cache gives the compiler relative names.
    cmake_path(RELATIVE_PATH PROJECT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_BINARY_DIR}
               OUTPUT_VARIABLE SFTPCLIENT_RELATIVE_SOURCE_DIR)
endif()

# What a processor has instructions for. A compiler that only says that it does not use a flag would pass CMake's checks.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|i[3-6]86)$")
    set(SFTPCLIENT_PROCESSOR_HARDENING -fcf-protection=full -fstack-clash-protection)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL aarch64)
    set(SFTPCLIENT_PROCESSOR_HARDENING -mbranch-protection=standard)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        list(APPEND SFTPCLIENT_PROCESSOR_HARDENING -fstack-clash-protection)
    endif()
endif()

function(sftpclient_harden target)
    if(NOT SFTPCLIENT_HARDENING)
        return()
    endif()
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        # A search path that is relative, for its length and the build's identifier stay behind when it is taken out.
        BUILD_RPATH_USE_ORIGIN ON)
    target_compile_options(${target} PRIVATE
        -fstack-protector-strong -Wformat -Werror=format-security -Wdate-time
        ${SFTPCLIENT_PROCESSOR_HARDENING}
        # The same bytes from any folder.
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
        -ffile-prefix-map=${PROJECT_BINARY_DIR}=.
        -ffile-prefix-map=${SFTPCLIENT_RELATIVE_SOURCE_DIR}=.)
    # A packager's own level counts, and without optimisation there is none.
    if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
        target_compile_options(${target} PRIVATE
            "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    endif()
    target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now)
endfunction()
