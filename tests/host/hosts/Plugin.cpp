#include <HostLog.h>
#include <SFtpClient.h>

// A shared object with the ready services. It switches to JSON, and makes the library write a record.
extern "C" void writeRecord()
{
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    HostLog::instance().apply(settings);
    SFtpClient().CheckFileSizeBeforeDownload(SFtpRequest());
}
