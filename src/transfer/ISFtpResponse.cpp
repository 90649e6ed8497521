#include "ISFtpResponse.h"

ISFtpResponse::~ISFtpResponse() = default;
