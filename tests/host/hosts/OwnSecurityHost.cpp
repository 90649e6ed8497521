#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

// A host with its own security service and request identifiers, and the other ready services.
SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& cert)
{
    cert = "own";
    return SECURITYSS_SUCCESS;
}

ThreadRequestId TSP_RequestID;

unsigned long& ThreadRequestId::get()
{
    static unsigned long identifier = 77;
    return identifier;
}

int main()
{
    std::string cert;
    SecuritySS::enrichSSL(nullptr, cert);
    LogProxy(2, cert, TSP_RequestID.get(), "main()", 9) << 0 << ConfigReader::getInt("General", "None", true);
    return 0;
}
