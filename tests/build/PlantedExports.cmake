# The check of the exports must detect a list that has one name more, or one fewer, than the library.
include(${CMAKE_CURRENT_LIST_DIR}/Configure.cmake)
file(READ ${MAP} map)

function(expect_difference planted text)
    file(WRITE ${SCRATCH}/planted.map "${planted}")
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DNM=${NM} -DLIBRARY=${LIBRARY} -DMAP=${SCRATCH}/planted.map
                -P ${CMAKE_CURRENT_LIST_DIR}/CheckExports.cmake
        RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT failed)
        message(FATAL_ERROR "A difference between exports.map and the library was not noticed: ${text}")
    endif()
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    expect_in_output("${text}")
endfunction()

string(REPLACE "\"CurlSFtpResponse::GetErrCode()\";" "\"CurlSFtpResponse::GetErrCode()\"; \"CurlSFtpResponse::Lost()\";"
       more "${map}")
expect_difference("${more}" "Listed, but not exported: CurlSFtpResponse::Lost() Exported, but not listed: Hosts")

string(REPLACE "\"CurlSFtpResponse::GetErrCode()\";" "" fewer "${map}")
expect_difference("${fewer}" "Listed, but not exported: Exported, but not listed: CurlSFtpResponse::GetErrCode() Hosts")

string(REPLACE "sftp_write_data*;" "sftp_write_data*; sftp_lost*;" more "${map}")
expect_difference("${more}" "Listed, but not exported: sftp_lost* Exported, but not listed: Hosts")

string(REPLACE "sftp_write_data*;" "" fewer "${map}")
expect_difference("${fewer}" "Listed, but not exported: Exported, but not listed: sftp_write_data(")
