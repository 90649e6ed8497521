#ifndef SUPPORT_RECORDINGHOST_H
#define SUPPORT_RECORDINGHOST_H

#include "support/Lines.h"

#include <SecuritySS.h>

#include <functional>
#include <string>

/// Host services that keep what the library passes them, and note it in the journal: a record as "log " and its text.
namespace recording {

struct Record
{
    int level;
    std::string module;
    unsigned long requestId;
    std::string function;
    unsigned int line;
    Lines pieces; ///< as they were inserted, empty ones too
    bool bad;     ///< the stream's bad state at the end

    /// LEVEL MODULE IDENTIFIER FUNCTION: PIECE|PIECE|PIECE; it says where no line was named and where the stream is
    /// bad.
    std::string text() const;
};

struct Enrichment
{
    void* curl;
    std::string* cert;
    std::string text;
};

struct Host
{
    unsigned long requestId = 77;
    int certAuthSwitch = 1;
    SecuritySS_RC enriched = SECURITYSS_SUCCESS;
    std::vector<Record> records;
    std::vector<Enrichment> enrichments;

    /// Called for each step of a record: "identifier", "begin", "piece ...", "end".
    std::function<void(const std::string& step)> onStep;
};

Host& host();

/// Starts afresh.
void reset();

/// The texts of the records so far, which are forgotten with the journal.
Lines takeRecords();

} // namespace recording

#endif
