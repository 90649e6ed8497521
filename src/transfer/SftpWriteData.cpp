#include "transfer/SftpWriteData.h"

#include <cstdio>

size_t sftp_write_data(void* buffer, size_t size, size_t count, void* stream)
{
    return fwrite(buffer, size, count, static_cast<FILE*>(stream));
}
