// What each operation tells libcurl, in order, from the first handle to the last record.
#include "OperationCalls.h"
#include "SessionContract.h"

namespace {

struct Row
{
    std::string name;
    std::string function;
    std::string path;             ///< behind the server
    std::vector<Lines> transfers; ///< what each is told beyond the setup
    Lines before = {};            ///< between the connection and the first transfer
    Lines after = {};             ///< between the last transfer and the record
    Lines instead = {};           ///< the same where the transfer failed
};

std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.name; }

constexpr const char* kTemporary = ".a b.bak.XXXXXXXXXXXX.part";

// An option that is a list of commands.
Lines listed(const std::string& option, const Lines& texts)
{
    Lines lines;
    std::string whole;
    for (const std::string& each : texts) {
        lines.push_back((whole.empty() ? "list of its own: " : "list of another: ") + each);
        whole += "[" + each + "]";
    }
    lines.push_back("1 " + option + " = " + (whole.empty() ? "null" : whole));
    return lines;
}

// Commands at a visit to a directory without a data connection. Over FTP libcurl sends one before anything else, and
// the session judges the reply.
Lines commands(const std::string& url, Lines texts)
{
    const Lines visit = {"1 URL = " + url, "1 NOBODY = 1"};
    if (url.rfind("sftp:", 0) == 0) {
        return visit + listed("POSTQUOTE", texts);
    }
    std::string first = texts.empty() ? "*NOOP" : texts.front();
    first = (first[0] == '*' ? "" : "*") + first;
    const Lines later(texts.begin() + (texts.empty() ? 0 : 1), texts.end());
    Lines lists = listed("PREQUOTE", {first});
    if (!later.empty()) {
        const Lines more = listed("POSTQUOTE", later);
        lists.insert(lists.begin() + 1, more.begin(), more.end() - 1);
        lists.push_back(more.back());
    }
    return visit + lists;
}

Lines sending(const std::string& directory, const std::string& size, const Lines& texts)
{
    return Lines{"1 URL = " + directory + ".a%20b.bak.XXXXXXXXXXXX.part", "1 UPLOAD = 1",
                 "1 READFUNCTION = unknown function", "1 READDATA = unknown",
                 "1 INFILESIZE_LARGE = " + size + " (64 bits)"} +
           listed("POSTQUOTE", texts);
}

// Over TLS, the end of the data is watched.
Lines receiving(const std::string& url)
{
    const bool isSsh = url.rfind("sftp:", 0) == 0;
    return Lines{"1 URL = " + url} +
           (isSsh ? Lines{} : Lines{"1 SSL_CTX_FUNCTION = unknown function", "1 SSL_CTX_DATA = unknown"}) +
           Lines{"1 MAXFILESIZE_LARGE = 53687091199 (64 bits)"};
}

// The file is on the disk before it takes its place, and then its name is.
const Lines kPlaced = {"fsync", "rename .local.PROCESS.0.part local", "fsync"};
const Lines kRemoved = {"unlink .local.PROCESS.0.part"};
const Lines kRename = {std::string("*SIZE ") + kTemporary, std::string("RNFR ") + kTemporary, "RNTO a b.bak"};

std::vector<Row> rowsOfFtp(const std::string& top)
{
    const std::string file = top + "a%20b.bak";
    return {
        {"List", "Listsftpdir", "", {{"1 URL = " + top, "1 DIRLISTONLY = 1"}}, {}, kPlaced, kRemoved},
        {"Download", "DownLoadSFtpFile", "a%20b.bak", {receiving(file)}, {}, kPlaced, kRemoved},
        {"Rename", "ReNameSFtpFile", "", {commands(top, {"RNFR from here", "RNTO to there"})}},
        {"Delete", "DelSFtpFile", "", {commands(top, {"DELE from here"})}},
        {"Upload", "UploadFileToSFtpServer", "a%20b.bak", {sending(top, "17", kRename)}, {"stat"}},
        {"Test", "TestSConnect", "", {commands(top, {})}},
        {"ListByFacts", "ListEntries", "", {commands(top, {"*FEAT"}), {"1 URL = " + top, "1 CUSTOMREQUEST = MLSD"}}},
        {"Stat", "StatEntry", "a%20b.bak", {{"1 URL = " + file, "1 NOBODY = 1", "1 FILETIME = 1"}}},
        {"ReadTime", "ReadModified", "a%20b.bak", {commands(top, {"MDTM a b.bak"})}},
        {"SetTime",
         "SetModified",
         "a%20b.bak",
         {commands(top, {"*FEAT"}), commands(top, {"MFMT 20260102030405 a b.bak"})}},
        {"Checksum", "ReadChecksum", "a%20b.bak", {commands(top, {"*FEAT"}), commands(top, {"HASH a b.bak"})}},
        {"MakeDirectory", "MakeSFtpDir", "a%20b.bak", {commands(top, {"MKD a b.bak"})}},
        {"RemoveDirectory", "RemoveSFtpDir", "a%20b.bak", {commands(top, {"RMD a b.bak"})}},
        {"DownloadToSink", "DownLoadTo", "a%20b.bak", {receiving(file)}},
        {"UploadFromSource", "UploadFrom", "a%20b.bak", {sending(top, "-1", kRename)}},
    };
}

Lines askedOf(const std::string& url) { return {"1 URL = " + url, "1 NOBODY = 1", "1 FILETIME = 1"}; }

std::vector<Row> rowsOfSsh()
{
    const std::string top = "sftp://server:2121/backup/";
    const std::string file = top + "a%20b.bak";
    const Lines asked = askedOf(top + ".a%20b.bak.XXXXXXXXXXXX.part");
    const std::string rename = std::string("rename \"/backup/") + kTemporary + "\" \"/backup/a b.bak\"";
    return {
        {"List", "Listsftpdir", "", {{"1 URL = " + top, "1 DIRLISTONLY = 1"}}, {}, kPlaced, kRemoved},
        {"Download", "DownLoadSFtpFile", "a%20b.bak", {receiving(file)}, {}, kPlaced, kRemoved},
        {"Rename", "ReNameSFtpFile", "", {commands(top, {"rename \"/backup/from here\" \"/backup/to there\""})}},
        {"Delete", "DelSFtpFile", "", {commands(top, {"rm \"/backup/from here\""})}},
        {"Upload",
         "UploadFileToSFtpServer",
         "a%20b.bak",
         {sending(top, "17", {}), asked, commands(top, {rename})},
         {"stat"}},
        {"Test", "TestSConnect", "", {commands(top, {}) + Lines{"1 FILETIME = 1"}}},
        {"ListEntries", "ListEntries", "", {{"1 URL = " + top}}},
        {"Stat", "StatEntry", "a%20b.bak", {{"1 URL = " + top}, askedOf(file)}},
        {"ReadTime", "ReadModified", "a%20b.bak", {askedOf(file)}},
        {"SetTime",
         "SetModified",
         "a%20b.bak",
         {commands(top, {"mtime \"20260102 03:04:05 GMT\" \"/backup/a b.bak\""})}},
        {"MakeDirectory", "MakeSFtpDir", "a%20b.bak", {commands(top, {"mkdir \"/backup/a b.bak\""})}},
        {"RemoveDirectory", "RemoveSFtpDir", "a%20b.bak", {commands(top, {"rmdir \"/backup/a b.bak\""})}},
        {"DownloadToSink", "DownLoadTo", "a%20b.bak", {receiving(file)}},
        {"UploadFromSource", "UploadFrom", "a%20b.bak", {sending(top, "-1", {}), asked, commands(top, {rename})}},
    };
}

class SessionOperation : public SessionContract, public testing::WithParamInterface<Row>
{
protected:
    SessionOperation() { features = {"MLST type*;size*;", "MFMT", "HASH MD5;SHA-256*"}; }

    void aim(const std::string& scheme)
    {
        request.remotePath = scheme + "://server:2121/backup/" + GetParam().path;
        request.remoteFileName = "from here";
        if (GetParam().function == "ReNameSFtpFile") {
            request.localPath = "to there";
        }
        if (scheme == "sftp") {
            content = "-rw-r--r-- 1 u g 7 Jan  1 00:00 a b.bak\n";
        } else if (GetParam().function == "ListEntries") {
            content = "type=file; a b.bak\n";
        }
    }

    void expectTold(const std::string& scheme)
    {
        const Row& row = GetParam();
        aim(scheme);
        const Lines setup = setUp(scheme);
        Lines expected = connectionMade() + row.before;
        for (const Lines& told : row.transfers) {
            const bool receives = told.back().find("MAXFILESIZE") != std::string::npos;
            // A connection test only asks to hear something.
            const bool asks = told.back() == "1 FILETIME = 1" && row.function != "TestSConnect";
            expected = expected + transferOf(setup, told) +
                       (receives || asks ? Lines{"1 getinfo CONTENT_LENGTH_DOWNLOAD_T"} : Lines{}) +
                       (asks ? Lines{"1 getinfo FILETIME_T"} : Lines{});
        }
        EXPECT_TRUE(sameLines(expected + row.after + Lines{endOf(row.function, request)} + connectionClosed(),
                              journalOfCall(operationCall(row.function).run)));
        EXPECT_EQ("as it was", errorText);
    }

    // A failure of the first transfer ends the call: nothing else is tried, and nothing else is told.
    void expectEnded(const std::string& scheme)
    {
        const Row& row = GetParam();
        aim(scheme);
        performGives(CURLE_COULDNT_CONNECT);
        const std::string record =
            failureOf(row.function, request, CURLE_COULDNT_CONNECT, scripted::text(CURLE_COULDNT_CONNECT));
        EXPECT_TRUE(sameLines(connectionMade() + row.before +
                                  transferOf(setUp(scheme), row.transfers.at(0), CURLE_COULDNT_CONNECT) + row.instead +
                                  Lines{record} + connectionClosed(),
                              journalOfCall(operationCall(row.function).run, CURLE_COULDNT_CONNECT)));
        EXPECT_EQ(scripted::text(CURLE_COULDNT_CONNECT), errorText);
    }
};

std::string nameOfRow(const testing::TestParamInfo<Row>& parameter) { return parameter.param.name; }

class SessionOverFtp : public SessionOperation
{
};

TEST_P(SessionOverFtp, TellsLibcurl) { expectTold("ftp"); }

TEST_P(SessionOverFtp, EndsWithItsFirstFailure) { expectEnded("ftp"); }

INSTANTIATE_TEST_SUITE_P(Each, SessionOverFtp, testing::ValuesIn(rowsOfFtp("ftp://server:2121/backup/")), nameOfRow);

class SessionOverFtps : public SessionOperation
{
};

TEST_P(SessionOverFtps, TellsLibcurl) { expectTold("ftps"); }

TEST_P(SessionOverFtps, EndsWithItsFirstFailure) { expectEnded("ftps"); }

INSTANTIATE_TEST_SUITE_P(Each, SessionOverFtps, testing::ValuesIn(rowsOfFtp("ftps://server:2121/backup/")), nameOfRow);

class SessionOverSsh : public SessionOperation
{
};

TEST_P(SessionOverSsh, TellsLibcurl) { expectTold("sftp"); }

TEST_P(SessionOverSsh, EndsWithItsFirstFailure) { expectEnded("sftp"); }

INSTANTIATE_TEST_SUITE_P(Each, SessionOverSsh, testing::ValuesIn(rowsOfSsh()), nameOfRow);

} // namespace
