// The rows through a session.
#include "Fault.h"
#include "Rows.h"

#include "support/RandomBytes.h"

#include <SFtpSession.h>

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>

namespace {

// What a session sends in place of the library's commands.
std::string inItsWords(std::string fault)
{
    for (const auto& [word, own] : {std::pair("rename=", "RNTO="), std::pair("rm=", "DELE=")}) {
        if (boost::algorithm::starts_with(fault, word)) {
            fault.replace(0, std::string(word).size(), own);
        }
    }
    return fault;
}

} // namespace

// A stall lasts until the session ends it.
Rows chosen(const Rows& rows)
{
    Rows same = rows;
    for (Row& each : same) {
        for (std::string& fault : each.faults) {
            fault = inItsWords(fault);
        }
        if (each.arrange == rows::boundedStall || each.arrange == rows::stallBeyondConnecting) {
            each.arrange = nullptr;
            each.codes = {CURLE_OPERATION_TIMEDOUT};
        }
    }
    return same;
}

namespace {

// Where a session ends a row differently from the library, and why.
const std::map<std::string, std::set<int>>& ownCodes()
{
    static const std::map<std::string, std::set<int>> codes = {
        // SIZE is part of the download, and a reply without a size counts as no reply.
        {"SizeCheck/MissingForTheCheckOnly", {CURLE_REMOTE_FILE_NOT_FOUND}},
        {"SizeCheck/Reply500", {CURLE_OK}},
        {"SizeCheck/Reply530", {CURLE_OK}},
        {"SizeCheck/NoNumber", {CURLE_OK}},
        {"SizeCheck/Empty", {CURLE_OK}},
        {"SizeCheck/TwentyFourDigits", {CURLE_OK}},
        {"SizeCheck/AboveTheLimit", {CURLE_FILESIZE_EXCEEDED}},
        {"SizeCheck/BelowTheLimit", {CURLE_PARTIAL_FILE, CURLE_RECV_ERROR}}, // and fewer bytes arrive
        {"SizeCheck/Reply421", {CURLE_OPERATION_TIMEDOUT}},
        {"SizeCheck/Closed", {CURLE_RECV_ERROR}},
        {"SizeCheck/GreetingClosed", {CURLE_RECV_ERROR}},
        {"SizeCheck/LoginRefused", {CURLE_LOGIN_DENIED}},
        {"SizeCheck/DirectoryRefused", {CURLE_REMOTE_FILE_NOT_FOUND}},
        // Without a size, the server must announce the end.
        {"DownloadData/DroppedWithSizeUnknown", {CURLE_RECV_ERROR}},
        // No operation lists for the sake of its commands, so that no data connection can spoil these.
        {"ListingData/CertificateOfAnotherCa", {CURLE_OK}},
        {"Pasv/ClosedPortsForADelete", {CURLE_OK}},
        {"Epsv/SilenceThenClosed", {CURLE_OK}},
        {"Visit/ListRefused", {CURLE_OK}},
        {"Visit/ListRefusedForADelete", {CURLE_OK}},
        {"Visit/DataDropped", {CURLE_OK}},
        {"Visit/DataReset", {CURLE_OK}},
        {"Visit/DataWithoutTls", {CURLE_OK}},
        {"Visit/Done426", {CURLE_OK}},
        {"Visit/Done421", {CURLE_OK}},
        {"Visit/DoneClosed", {CURLE_OK}},
        // A reply that announces another, or asks for a further command, confirms nothing.
        {"RenameCommand/Reply150WithoutEffect", {CURLE_WEIRD_SERVER_REPLY}},
        {"RmCommand/Reply350WithoutEffect", {CURLE_WEIRD_SERVER_REPLY}},
        // Names are compared.
        {"Certificate/OfAnotherHost", {CURLE_PEER_FAILED_VERIFICATION}},
        // The session's own codes.
        {"Cwd/Reply550ForTheConnectionTest", {CURLE_REMOTE_FILE_NOT_FOUND}},
        {"UploadSource/HasMoreBytesThanItsSizeSays", {CURLE_READ_ERROR}},
        // libcurl ends the data after five bytes, which the server may take for an abort.
        {"SizeCheck/Negative", {CURLE_WEIRD_SERVER_REPLY, CURLE_PARTIAL_FILE}},
    };
    return codes;
}

int operate(Operation operation, SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    switch (operation) {
    case Operation::Connect:
        return session.TestSConnect(request, errorText);
    case Operation::List:
        return session.Listsftpdir(request, errorText);
    case Operation::Download:
    case Operation::Checked:
        return session.DownLoadSFtpFile(request, errorText);
    case Operation::Rename:
        return session.ReNameSFtpFile(request, errorText);
    case Operation::Delete:
        return session.DelSFtpFile(request, errorText);
    default:
        return session.UploadFileToSFtpServer(request, errorText);
    }
}

std::set<int> codesOf(const Row& row, const std::string& suite)
{
    const auto own = ownCodes().find(suite.substr(0, suite.find('/')) + "/" + row.name);
    std::set<int> codes = own == ownCodes().end() ? row.codes : own->second;
    for (const std::string& fault : row.faults) {
        if (boost::algorithm::ends_with(fault, "=reset") && codes.count(CURLE_OK) == 0) {
            // Either the send or the read fails.
            codes.insert({CURLE_SEND_ERROR, CURLE_RECV_ERROR});
        }
    }
    return codes;
}

// One second if a limit is to end the row; otherwise so long that none does. Where an upload's data stalls, replies
// have more time: on a busy machine, too, the session is to remove what it has sent.
SessionOptions limitsFor(const Row& row, const std::set<int>& codes)
{
    const auto isAboutData = [](const std::string& fault) { return boost::algorithm::starts_with(fault, "DATA="); };
    const bool isLimited = codes.count(CURLE_OPERATION_TIMEDOUT) == 1;
    const bool stallsUpload =
        row.operation == Operation::Upload && std::any_of(row.faults.begin(), row.faults.end(), isAboutData);
    SessionOptions options;
    options.connectTimeout = options.replyTimeout = std::chrono::seconds(isLimited && !stallsUpload ? 1 : 60);
    options.stallTimeout = std::chrono::seconds(isLimited ? 1 : 60);
    return options;
}

std::string textOf(const Left& left) { return left.bytes ? randomBytes(*left.bytes) : left.text; }

// Of the file that the operation writes or changes: all of it, or what there was before. A command can have had its
// effect when the reply to it fails.
std::string expectedLeft(const Row& row, int code, const std::string& before)
{
    const bool isCommand = row.operation == Operation::Rename || row.operation == Operation::Delete;
    if (row.left && row.codes.count(code) == 1 && (code == CURLE_OK || isCommand)) {
        return textOf(*row.left);
    }
    if (code != CURLE_OK) {
        return before;
    }
    switch (row.operation) {
    case Operation::Delete:
        return kNoFile;
    case Operation::List:
        return kNames;
    case Operation::Connect:
        return before;
    default:
        return randomBytes(row.operation == Operation::Upload ? kUploaded : kAll);
    }
}

Lines filesIn(const std::string& folder)
{
    Lines files;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder)) {
        if (each.is_regular_file()) {
            files.push_back(each.path().filename());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

TEST_P(Fault, EndsAsExpected)
{
    const std::set<int> codes =
        codesOf(row(), testing::UnitTest::GetInstance()->current_test_info()->test_suite_name());
    const std::string before = whatIsLeft();
    const Lines localFiles = filesIn(local(""));
    const Lines servedFiles = filesIn(served(""));
    SFtpSession session(limitsFor(row(), codes));
    const auto begun = std::chrono::steady_clock::now();
    const int code = operate(row().operation, session, request, errorText);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;

    EXPECT_GT(kLongest, took.count()) << "seconds for the call";
    EXPECT_EQ(1U, codes.count(code)) << nameOf(code) << ": " << errorText << "\n" << row() << "\n" << row().why;
    const std::string expected = expectedLeft(row(), code, before);
    EXPECT_TRUE(sameBytes(expected, whatIsLeft())) << row();
    EXPECT_EQ(code == CURLE_OK, errorText == "as it was") << errorText;
    if (code != CURLE_OK && expected == before) {
        EXPECT_EQ(localFiles, filesIn(local("")));
        EXPECT_EQ(servedFiles, filesIn(served("")));
    }
    // A temporary file has been renamed, or removed.
    for (const std::string& name : filesIn(folder.path())) {
        EXPECT_EQ(std::string::npos, name.find(".part")) << name;
    }
}
