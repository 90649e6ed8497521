# What the packages consist of and need, as an SPDX document: one for all of them, for they are made together. A test
# compares it with the packages.
find_package(spdlog REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CLI11 REQUIRED)

# The compiler tells what it compiles for, which may be another machine than this one.
function(sftpclient_macro header macro result)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -E -dM -x c++ -include ${header} /dev/null
                    OUTPUT_VARIABLE macros COMMAND_ERROR_IS_FATAL ANY)
    if(macros MATCHES "#define ${macro} ([0-9]+)\n")
        set(${result} ${CMAKE_MATCH_1} PARENT_SCOPE)
    else()
        message(FATAL_ERROR "${CMAKE_CXX_COMPILER} does not define ${macro}.")
    endif()
endfunction()
sftpclient_macro(features.h __GLIBC__ glibc_major)
sftpclient_macro(features.h __GLIBC_MINOR__ glibc_minor)
sftpclient_macro(cstddef _GLIBCXX_RELEASE gcc_release)

function(sftpclient_sbom_package name version licence summary)
    set(reference "")
    if(NOT licence STREQUAL "NONE")
        set(reference ",
      \"externalRefs\": [{\"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\",
                        \"referenceLocator\": \"pkg:generic/${name}@${version}\"}]")
    endif()
    set(entry "    {
      \"SPDXID\": \"SPDXRef-${name}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"summary\": \"${summary}\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseDeclared\": \"${licence}\",
      \"copyrightText\": \"NOASSERTION\"${reference}
    }")
    set_property(GLOBAL APPEND PROPERTY SFTPCLIENT_SBOM_PACKAGES "${entry}")
endfunction()

function(sftpclient_sbom_relation from type)
    foreach(to IN LISTS ARGN)
        set_property(GLOBAL APPEND PROPERTY SFTPCLIENT_SBOM_RELATIONS
            "    {\"spdxElementId\": \"SPDXRef-${from}\", \"relationshipType\": \"${type}\", \"relatedSpdxElement\": \"SPDXRef-${to}\"}")
    endforeach()
endfunction()

foreach(component RUNTIME SESSION DEVELOPMENT COMMAND)
    string(REGEX REPLACE "\n.*" "" summary "${CPACK_COMPONENT_${component}_DESCRIPTION}")
    sftpclient_sbom_package(${CPACK_DEBIAN_${component}_PACKAGE_NAME} ${PROJECT_VERSION} NONE "${summary}")
    sftpclient_sbom_relation(DOCUMENT DESCRIBES ${CPACK_DEBIAN_${component}_PACKAGE_NAME})
endforeach()
sftpclient_sbom_package(boost "${Boost_VERSION_STRING}" BSL-1.0 "C++ headers")
sftpclient_sbom_package(cli11 "${CLI11_VERSION}" BSD-3-Clause "C++ headers: command lines")
sftpclient_sbom_package(curl "${CURL_VERSION_STRING}" curl "Shared library: transfers")
sftpclient_sbom_package(fmt "${fmt_VERSION}" MIT "C++ headers: formatting")
sftpclient_sbom_package(gcc "${gcc_release}" "GPL-3.0-or-later WITH GCC-exception-3.1" "Shared libraries: runtime of C++")
sftpclient_sbom_package(glibc "${glibc_major}.${glibc_minor}" LGPL-2.1-or-later "Shared library: runtime of C")
sftpclient_sbom_package(nlohmann-json "${nlohmann_json_VERSION}" MIT "C++ headers: JSON")
sftpclient_sbom_package(openssl "${OPENSSL_VERSION}" Apache-2.0 "Shared libraries: TLS")
sftpclient_sbom_package(spdlog "${spdlog_VERSION}" MIT "Shared library and C++ headers: logging")

# STATIC_LINK: the compiled headers are in the package itself, so that a new version counts only after a new build.
set(session libsftpsession${PROJECT_VERSION_MAJOR})
sftpclient_sbom_relation(${library} DEPENDS_ON curl gcc glibc openssl)
sftpclient_sbom_relation(${library} STATIC_LINK boost)
sftpclient_sbom_relation(${session} DEPENDS_ON ${library} curl gcc glibc openssl)
sftpclient_sbom_relation(${session} STATIC_LINK boost)
sftpclient_sbom_relation(libsftpclient-dev DEPENDS_ON ${library} ${session} boost curl openssl spdlog)
sftpclient_sbom_relation(libsftpclient-dev STATIC_LINK boost fmt nlohmann-json spdlog)
sftpclient_sbom_relation(sftpclient DEPENDS_ON ${library} ${session} curl gcc glibc openssl spdlog)
sftpclient_sbom_relation(sftpclient STATIC_LINK boost cli11 fmt nlohmann-json spdlog)

get_property(packages GLOBAL PROPERTY SFTPCLIENT_SBOM_PACKAGES)
get_property(relations GLOBAL PROPERTY SFTPCLIENT_SBOM_RELATIONS)
list(JOIN packages ",\n" SFTPCLIENT_SBOM_PACKAGES)
list(JOIN relations ",\n" SFTPCLIENT_SBOM_RELATIONS)
string(TIMESTAMP SFTPCLIENT_SBOM_CREATED "%Y-%m-%dT%H:%M:%SZ" UTC)
# The same content has the same name.
string(UUID SFTPCLIENT_SBOM_UUID NAMESPACE 6ba7b811-9dad-11d1-80b4-00c04fd430c8 TYPE SHA1
       NAME "${SFTPCLIENT_SBOM_PACKAGES}${SFTPCLIENT_SBOM_RELATIONS}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/sftpclient.spdx.json.in ${PROJECT_BINARY_DIR}/sftpclient.spdx.json @ONLY)
