#ifndef CONTRACT_HARNESS_RECORDINGHOST_H
#define CONTRACT_HARNESS_RECORDINGHOST_H

#include <SecuritySS.h>

#include <string>

/// Host services that note every use. A record's line in the journal is
///     log LEVEL MODULE IDENTIFIER FUNCTION: PIECE|PIECE|PIECE
/// with the pieces as they were inserted, empty ones too.
namespace recording {

struct Host
{
    unsigned long requestId = 77;
    int certAuthSwitch = 1;
    SecuritySS_RC enriched = SECURITYSS_SUCCESS;
};

Host& host();

} // namespace recording

#endif
