#include <SecuritySS.h>

// This host has no TLS settings of its own.
SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& /*cert*/) { return SECURITYSS_SUCCESS; }
