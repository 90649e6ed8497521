#ifndef SFTPCLIENT_TRANSFER_SFTPWRITEDATA_H
#define SFTPCLIENT_TRANSFER_SFTPWRITEDATA_H

#include <cstddef>

/// CURLOPT_WRITEFUNCTION that writes each block to `stream`, an open `FILE*`. Returns what `fwrite` returned: a short
/// count makes libcurl stop with its write error (23).
__attribute__((visibility("default"))) size_t sftp_write_data(void* buffer, size_t size, size_t count, void* stream);

#endif
