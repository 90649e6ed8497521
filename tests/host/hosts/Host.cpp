#include <SFtpClient.h>

#include <curl/curl.h>

int main()
{
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
        return 1;
    }
    // Without a URL it fails before anything is sent, and says so in a record.
    const bool accepted = SFtpClient().CheckFileSizeBeforeDownload(SFtpRequest());
    curl_global_cleanup();
    return accepted ? 1 : 0;
}
