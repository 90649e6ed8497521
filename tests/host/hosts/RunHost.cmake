# Runs a host, which must exit with 0 and print what is expected. (ctest's PASS_REGULAR_EXPRESSION would not check how
# it ended: a crash at exit or a leak would pass.)
execute_process(COMMAND ${PROGRAM} ${ARGUMENTS} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR NOT output MATCHES "${EXPECTED}")
    message(FATAL_ERROR "${PROGRAM} must print ${EXPECTED} and end with 0. It ended with ${result} and printed:\n"
                        "${output}")
endif()
