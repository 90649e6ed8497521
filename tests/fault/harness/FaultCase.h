#ifndef FAULT_HARNESS_FAULTCASE_H
#define FAULT_HARNESS_FAULTCASE_H

#include <Certificates.h>
#include <FtpServer.h>
#include <SFtpRequest.h>

#include <cstddef>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

enum class Operation
{
    Connect,  ///< the connection test
    List,     ///< of the directory /dir/, into the local file
    Download, ///< of /dir/a.bak into the local file, without the size check
    Checked,  ///< the same through `SFtpClient`, size check and all
    Rename,   ///< of /dir/a.bak to /dir/new.bak
    Delete,   ///< of /dir/a.bak
    Upload    ///< of the local file to /dir/up.bak
};

/// Where the expected codes of a row come from.
enum class Basis
{
    Measured,   ///< libcurl alone against such a server, in releases 7.88.1, 8.14.1 and 8.21.0
    Documented, ///< libcurl's documentation
    Tool        ///< what the `curl` command answered to the very server of the row
};

/// What a row may change of the server and of the request before the operation begins.
struct Scene
{
    testserver::ServerConfig& server;
    const testserver::CertificateAuthority& authority; ///< the request trusts it
    SFtpRequest& request;
    std::string scheme;      ///< of the URL; empty: what fits the server
    bool serverGone = false; ///< the server has left its port
};

/// What the operation leaves in the file that it writes or changes.
struct Left
{
    std::string text;
    std::optional<std::size_t> bytes; ///< in place of a text: so many of the file that moves
    bool orLess = false;              ///< fewer will do, because how many arrived is a matter of time
    std::optional<int> code; ///< only where this was the result; the other codes of the row leave something else
};

/// One row: a server that misbehaves, an operation that meets it, and how that must end.
struct FaultCase
{
    FaultCase(std::string name, Operation operation, std::vector<std::string> faults, std::set<int> codes);

    /// Why there is more than one code: releases of libcurl that differ, or a race.
    FaultCase because(const std::string& text) const;
    FaultCase basedOn(Basis source) const;
    /// Seconds that each reply may take; only a listing can be told.
    FaultCase waiting(unsigned seconds) const;
    FaultCase leaving(const std::string& text) const;
    FaultCase leaving(std::size_t bytes) const;
    FaultCase leavingAtMost(const std::string& text) const;
    FaultCase leavingAtMost(std::size_t bytes) const;
    FaultCase leavingAfter(int code, const std::string& text) const;
    FaultCase leavingAfter(int code, std::size_t bytes) const;
    FaultCase at(const std::string& remote) const;
    FaultCase on(void (*change)(Scene&)) const;
    /// Seconds that connecting may take pass 20 times as fast. What the operation tells libcurl counts, not the row.
    FaultCase hastened() const;
    /// The `curl` command has no option for what the row needs.
    FaultCase beyondTheTool() const;

    std::string name;
    Operation operation;
    std::vector<std::string> faults;
    std::set<int> codes;
    std::string why;
    Basis basis = Basis::Measured;
    unsigned responseTimeout = 0;
    std::optional<Left> left;
    std::string path;
    void (*arrange)(Scene&) = nullptr;
    bool hasten = false;
    bool replayed = true;
};

std::ostream& operator<<(std::ostream& stream, const FaultCase& row);

/// The first bytes of the file that moves; bytes without a pattern that a lost or doubled block could hide in.
std::string begin(std::size_t count);

/// All of that file, for a download.
constexpr std::size_t kAll = 100000;
/// For an upload, more than the sockets between client and server can hold.
constexpr std::size_t kUploaded = 16000000;

/// What a listing of /dir/ holds, and what a file that is not there reads as.
constexpr const char* kNames = "a.bak\nb.bak\n";
constexpr const char* kNoFile = "no such file";

#endif
