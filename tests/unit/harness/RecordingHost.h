#ifndef UNIT_HARNESS_RECORDINGHOST_H
#define UNIT_HARNESS_RECORDINGHOST_H

#include <SecuritySS.h>

#include <functional>
#include <string>
#include <vector>

/// Host services that keep what the library hands them.
namespace recording {

struct Record
{
    int level;
    std::string module;
    unsigned long requestId;
    std::string function;
    unsigned int line;
    std::vector<std::string> pieces; ///< as they were inserted, empty ones too
    bool bad;                        ///< the stream's bad state at the end

    /// LEVEL MODULE IDENTIFIER FUNCTION: PIECE|PIECE|PIECE
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
    SecuritySS_RC enriched = SECURITYSS_SUCCESS;
    std::vector<Record> records;
    std::vector<Enrichment> enrichments;

    /// Told of each step of a record: "identifier", "begin", "piece ...", "end".
    std::function<void(const std::string& step)> onStep;
};

Host& host();

/// Starts afresh.
void reset();

/// The texts of the records so far, which are forgotten. A record that names no line says so.
std::vector<std::string> takeRecords();

} // namespace recording

#endif
