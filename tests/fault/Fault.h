#ifndef FAULT_FAULT_H
#define FAULT_FAULT_H

#include "support/Codes.h"
#include "support/CurlRelease.h"
#include "support/Live.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
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

/// Seconds that no operation may take, unless its row says so: the shortest of libcurl's default time-outs.
constexpr double kLongest = 20;

/// What a row may change in the server and the request before the operation begins.
struct Scene
{
    testserver::ServerConfig& server;
    SFtpRequest& request;
    const testserver::CertificateAuthority& authority; ///< the request trusts it
    std::string scheme = {};                           ///< of the URL; empty: what fits the server
    bool serverGone = false;                           ///< the server has left its port
};

/// What the operation leaves in the file that it writes or changes.
struct Left
{
    std::string text;
    std::optional<std::size_t> bytes = {}; ///< in place of a text: so many of the file that moves
    bool orLess = false;                   ///< fewer are accepted, because how many arrive depends on timing
    std::optional<int> code = {}; ///< only where this was the result; the other codes of the row leave something else
};

/// One row: a server that misbehaves, an operation that meets it, and how that must end.
struct Row
{
    Row(std::string name, Operation operation, std::vector<std::string> faults, std::set<int> codes);

    /// The code from libcurl 8.14 on, in place of the others.
    Row& in814(int code, const char* text)
    {
        in788 = codes;
        codes = isCurl814() ? std::set<int>{code} : codes;
        in814Code = code;
        return because(text);
    }
    /// Why there is more than one code: releases of libcurl differ.
    Row& because(const char* text) { return (why = text, *this); }
    /// The same for a race: each run may give another code.
    Row& racing(const char* text) { return (race = true, because(text)); }
    /// Seconds that the call may take.
    Row& lasting(double seconds) { return (longest = seconds, *this); }
    /// Seconds that each reply may take; only a listing has this time-out.
    Row& waiting(unsigned seconds) { return (responseTimeout = seconds, *this); }
    Row& leaving(const char* text) { return (left = Left{text}, *this); }
    Row& leaving(std::size_t bytes) { return (left = Left{"", bytes}, *this); }
    Row& leavingAtMost(const char* text) { return (left = Left{text, {}, true}, *this); }
    Row& leavingAtMost(std::size_t bytes) { return (left = Left{"", bytes, true}, *this); }
    Row& leavingAfter(int code, const char* text) { return (left = Left{text, {}, false, code}, *this); }
    Row& leavingAfter(int code, std::size_t bytes) { return (left = Left{"", bytes, false, code}, *this); }
    Row& at(const char* remote) { return (path = remote, *this); }
    Row& on(void (*change)(Scene&)) { return (arrange = change, *this); }
    /// Connection time-outs pass 20 times as fast: those that the operation sets, not the row.
    Row& hastened() { return (hasten = true, beyondTheTool()); }
    /// The `curl` command has no option for what the row needs.
    Row& beyondTheTool() { return (replayed = false, *this); }

    std::string name;
    Operation operation;
    std::vector<std::string> faults;
    std::set<int> codes;
    std::set<int> in788; ///< the codes before libcurl 8.14; none where releases agree
    int in814Code = 0;   ///< and the one since
    std::string why;
    bool race = false;
    unsigned responseTimeout = 0;
    double longest = kLongest;
    std::optional<Left> left;
    std::string path;
    void (*arrange)(Scene&) = nullptr;
    bool hasten = false;
    bool replayed = true;
};

using Rows = std::vector<Row>;

std::ostream& operator<<(std::ostream& stream, const Row& row);

/// All of the file that moves, for a download.
constexpr std::size_t kAll = 100000;
/// For an upload, more than the sockets between client and server can hold.
constexpr std::size_t kUploaded = 16000000;
/// What a listing of /dir/ holds.
constexpr const char* kNames = "a.bak\nb.bak\n";

/// Builds what the row asks for, files, server and request, and compares the outcome with the row. Two programs have
/// its rows: in one the library meets them, in the other the `curl` command.
class Fault : public Live, public testing::WithParamInterface<Row>
{
protected:
    void SetUp() override;

    void expectCode(int code) const;
    /// `code` is what the operation has ended with.
    void expectLeft(int code) const;
    bool tellsWhatIsLeft(int code) const { return row().left && row().left->code.value_or(code) == code; }
    /// Of the file that the operation writes or changes.
    std::string whatIsLeft() const;

    static const Row& row() { return GetParam(); }
};

/// Those of the rows that the program can run.
Rows chosen(const Rows& rows);

std::string idOf(const testing::TestParamInfo<Row>& info);

#endif
