// A session on every server: each operation works, round after round, over a connection that is kept.
#include "RealServer.h"

#include "support/HttpProxy.h"
#include "support/TreeFiles.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace {

std::string randomBytes(std::size_t size)
{
    std::mt19937 random(20261121);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

class Sessions : public RealServer
{
protected:
    Sessions() { speaksNewestTls = true; }

    // The options of a host that knows this server: an SSH server by its key's fingerprint.
    // With TLS wherever the server offers it.
    SessionOptions optionsHere()
    {
        SessionOptions chosen = options();
        chosen.requireTls = server.dataTls != DataTls::None;
        return chosen;
    }

    SessionOptions options()
    {
        SessionOptions chosen;
        if (server.scheme == "sftp") {
            aimAt("");
            SFtpSession stranger;
            EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, stranger.TestSConnect(request, errorText));
            const std::string::size_type begin = errorText.find("SHA256:");
            EXPECT_NE(std::string::npos, begin) << errorText;
            chosen.hostKeySha256 = errorText.substr(begin, errorText.find(';', begin) - begin);
        }
        return chosen;
    }

    int upload(SFtpSession& session)
    {
        aimAt("new/folder/sent.bak");
        writeFile(request.localPath, content);
        const int code = session.UploadFileToSFtpServer(request, errorText);
        EXPECT_EQ(code == 0, contentOf(served("new/folder/sent.bak")) == content) << errorText;
        return code;
    }

    int download(SFtpSession& session)
    {
        keep("weekly/fetched.bak", content);
        aimAt("weekly/fetched.bak");
        request.localPath = local("fetched");
        const int code = session.DownLoadSFtpFile(request, errorText);
        EXPECT_EQ(code == 0, contentOf(request.localPath) == content) << errorText;
        return code;
    }

    int list(SFtpSession& session)
    {
        keep("listed/a.bak", "a");
        aimAt("listed/");
        request.localPath = local("names");
        const int code = session.Listsftpdir(request, errorText);
        EXPECT_EQ(code == 0 ? "a.bak\n" : kNoFile, contentOf(request.localPath)) << errorText;
        return code;
    }

    int rename(SFtpSession& session)
    {
        keep("weekly/old.bak", "renamed");
        aimAt("weekly/");
        request.remoteFileName = "old.bak";
        request.localPath = "new.bak";
        const int code = session.ReNameSFtpFile(request, errorText);
        EXPECT_EQ(code == 0, contentOf(served("weekly/new.bak")) == "renamed") << errorText;
        return code;
    }

    int remove(SFtpSession& session)
    {
        keep("weekly/gone.bak", "deleted");
        aimAt("weekly/");
        request.remoteFileName = "gone.bak";
        const int code = session.DelSFtpFile(request, errorText);
        EXPECT_EQ(code == 0, !exists(served("weekly/gone.bak"))) << errorText;
        return code;
    }

    int test(SFtpSession& session)
    {
        aimAt("");
        return session.TestSConnect(request, errorText);
    }

    void expectOk(int code, const char* what) { EXPECT_EQ(0, code) << what << ": " << errorText; }

    void goRound(SFtpSession& session)
    {
        aimAt("rounds/a b.bak");
        writeFile(request.localPath, content);
        expectOk(session.UploadFileToSFtpServer(request, errorText), "upload");
        EXPECT_EQ(content, contentOf(served("rounds/a b.bak")));
        RemoteEntry entry;
        expectOk(session.StatEntry(request, entry, errorText), "stat");
        EXPECT_EQ(static_cast<std::int64_t>(content.size()), entry.size);
        aimAt("rounds/");
        request.remoteFileName = "a b.bak";
        request.localPath = "c d.bak";
        expectOk(session.ReNameSFtpFile(request, errorText), "rename");
        request.localPath = local("names");
        expectOk(session.Listsftpdir(request, errorText), "list");
        EXPECT_EQ("c d.bak\n", contentOf(local("names")));
        std::vector<RemoteEntry> entries;
        expectOk(session.ListEntries(request, entries, errorText), "entries");
        ASSERT_EQ(1U, entries.size());
        EXPECT_EQ("c d.bak", entries[0].name);
        EXPECT_EQ(static_cast<std::int64_t>(content.size()), entries[0].size);
        aimAt("rounds/c d.bak");
        request.localPath = local("got");
        expectOk(session.DownLoadSFtpFile(request, errorText), "download");
        EXPECT_EQ(content, contentOf(local("got")));
        aimAt("rounds/");
        request.remoteFileName = "c d.bak";
        expectOk(session.DelSFtpFile(request, errorText), "delete");
        EXPECT_FALSE(exists(served("rounds/c d.bak")));
    }

    const std::string content = randomBytes(300001);
};

std::string rowOf(const Server& server, const std::vector<int>& codes)
{
    std::string row = "| " + server.title + " | ";
    for (const int code : codes) {
        row += (code == 0 ? "works" : std::to_string(code)) + " | ";
    }
    return row;
}

std::string sessionsSection()
{
    std::ifstream file(SERVERS_DOCUMENT);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return text.substr(std::min(text.find("\n## Sessions\n"), text.size()));
}

// With the defaults, but for the SSH server's key.
TEST_P(Sessions, AnswerAsTheDocumentSays)
{
    SFtpSession session(options());
    const std::string row = rowOf(
        server, {test(session), upload(session), list(session), download(session), rename(session), remove(session)});
    EXPECT_NE(std::string::npos, sessionsSection().find("\n" + row)) << row << " is not in docs/servers.md.";
}

TEST_P(Sessions, RunEveryOperationAgainAndAgain)
{
    SessionOptions chosen = optionsHere();
    if (server.dataTls != DataTls::None) {
        SessionOptions newest;
        newest.minimumTls = TlsVersion::Tls13;
        aimAt("");
        expectOk(SFtpSession(newest).TestSConnect(request, errorText), "test over TLS 1.3");
    }
    SFtpSession session(chosen);
    keep("rounds/x", "");
    std::filesystem::remove(served("rounds/x"));
    const unsigned before = connections();
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        goRound(session);
    }
    EXPECT_EQ(1U, connections() - before) << "control connections";
}

// Some servers rename over a file, others do not.
TEST_P(Sessions, ReplaceAFileAndTellItsTime)
{
    SFtpSession session(optionsHere());
    keep("replaced/a.bak", "the last one");
    aimAt("replaced/a.bak");
    writeFile(request.localPath, content);
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(2);
    const unsigned connected = connections();
    expectOk(session.UploadFileToSFtpServer(request, errorText), "upload");
    expectOk(session.UploadFileToSFtpServer(request, errorText), "upload again");
    EXPECT_EQ(1U, connections() - connected) << "control connections";
    EXPECT_EQ(content, contentOf(served("replaced/a.bak")));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("replaced")), {}));
    RemoteEntry entry;
    expectOk(session.StatEntry(request, entry, errorText), "stat");
    EXPECT_EQ(EntryKind::File, entry.kind);
    EXPECT_EQ(static_cast<std::int64_t>(content.size()), entry.size);
    ASSERT_TRUE(entry.modified.has_value());
    EXPECT_TRUE(before < *entry.modified && *entry.modified < std::chrono::system_clock::now());
    writeFile(request.localPath, "");
    expectOk(session.UploadFileToSFtpServer(request, errorText), "an empty file");
    expectOk(session.StatEntry(request, entry, errorText), "stat");
    EXPECT_EQ(0, entry.size);
    aimAt("replaced");
    expectOk(session.StatEntry(request, entry, errorText), "stat of a directory");
    EXPECT_EQ(EntryKind::Directory, entry.kind);
    aimAt("missing");
    EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, session.StatEntry(request, entry, errorText));
}

// Over SSH libcurl distrusts a kept connection that brings no byte.
TEST_P(Sessions, DownloadEmptyFilesOneAfterTheOther)
{
    SFtpSession session(optionsHere());
    keep("weekly/empty.bak", "");
    aimAt("weekly/empty.bak");
    request.localPath = local("fetched");
    const unsigned before = connections();
    for (int round = 0; round < 2; ++round) {
        writeFile(request.localPath, "older");
        expectOk(session.DownLoadSFtpFile(request, errorText), "download");
        EXPECT_EQ("", contentOf(request.localPath));
    }
    EXPECT_EQ(server.scheme == "sftp" ? 2U : 1U, connections() - before) << "control connections";
}

// Over TLS 1.3, too, where the server expects a TLS session on data connections that libcurl loses with an upload.
// vsftpd breaks off an upload now and then there.
TEST_P(Sessions, GoOnAfterAnUploadThatCannotTakeItsPlace)
{
    for (const TlsVersion oldest : {TlsVersion::Tls12, TlsVersion::Tls13}) {
        SCOPED_TRACE(oldest == TlsVersion::Tls12 ? "TLS 1.2" : "TLS 1.3");
        SessionOptions chosen = optionsHere();
        chosen.minimumTls = oldest;
        SFtpSession session(chosen);
        keep("a directory/x", "x");
        for (int round = 0; round < 2; ++round) {
            aimAt("a directory");
            writeFile(request.localPath, content);
            EXPECT_NE(0, session.UploadFileToSFtpServer(request, errorText));
            EXPECT_EQ(0, download(session)) << errorText;
        }
        EXPECT_EQ("x", contentOf(served("a directory/x")));
    }
}

TEST_P(Sessions, SetATimeWhereTheServerCan)
{
    SFtpSession session(optionsHere());
    keep("times/a b.bak", "content");
    aimAt("times/a b.bak");
    const auto time = std::chrono::system_clock::from_time_t(1700000000);
    const bool cannot = server.title.find("vsftpd") == 0;
    EXPECT_EQ(cannot ? int{CURLE_NOT_BUILT_IN} : 0, session.SetModified(request, time, errorText)) << errorText;
    std::chrono::system_clock::time_point told;
    expectOk(session.ReadModified(request, told, errorText), "time");
    EXPECT_EQ(!cannot, told == time);
}

TEST_P(Sessions, TakeNoDirectoryForEmptyThatMayNotBeRead)
{
    SFtpSession session(optionsHere());
    keep("locked/x", "content");
    std::filesystem::permissions(served("locked"), std::filesystem::perms(0311));
    aimAt("locked/");
    std::vector<RemoteEntry> entries;
    EXPECT_NE(0, session.ListEntries(request, entries, errorText));
    // ProFTPD's reply to NLST is that of an empty one.
    const bool tells = server.package != "proftpd-core" || server.scheme == "sftp";
    EXPECT_EQ(tells, session.Listsftpdir(request, errorText) != 0);
    std::filesystem::permissions(served("locked"), std::filesystem::perms(0755));
}

TEST_P(Sessions, GoThroughAProxy)
{
    SessionOptions chosen = optionsHere();
    const HttpProxy proxy;
    chosen.proxy = proxy.url();
    SFtpSession session(chosen);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(0, upload(session)) << errorText;
        EXPECT_EQ(0, download(session)) << errorText;
    }
    EXPECT_EQ(server.scheme == "sftp" ? 1U : 5U, proxy.clients());
}

// Before 1970, and after 2106, which is the end over SSH.
TEST_P(Sessions, SetTheTimeThatWasAskedForOrNone)
{
    SFtpSession session(optionsHere());
    keep("times/a.bak", "content");
    aimAt("times/a.bak");
    for (const std::int64_t seconds : {-86400LL, 4294967295LL, 4294967296LL, 7258118400LL}) {
        SCOPED_TRACE(seconds);
        setModified(served("times/a.bak"), 1700000000);
        const auto time = std::chrono::system_clock::time_point(std::chrono::seconds(seconds));
        const bool isSet = session.SetModified(request, time, errorText) == 0;
        EXPECT_EQ(isSet ? seconds : 1700000000, modified(served("times/a.bak"))) << errorText;
    }
}

// A call that is cancelled at some byte, and the next one that goes on from there.
TEST_P(Sessions, GoOnAfterABrokenTransfer)
{
    std::string large = randomBytes(3000001);
    SessionOptions chosen = optionsHere();
    chosen.resume = true;
    SFtpSession session(chosen);
    SFtpSession* running = nullptr;
    chosen.sendRate = chosen.receiveRate = 1000000;
    chosen.progress = [&running](const TransferProgress& now) {
        if (now.bytes > 300000) {
            running->Cancel();
        }
    };
    SFtpSession breaking(chosen);
    running = &breaking;
    keep("resumed/x", "");
    std::filesystem::remove(served("resumed/x"));
    aimAt("resumed/a.bak");
    request.localPath = local("sent");
    writeFile(request.localPath, large);
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, breaking.UploadFileToSFtpServer(request, errorText)) << errorText;
    expectOk(session.UploadFileToSFtpServer(request, errorText), "the upload that goes on");
    EXPECT_TRUE(sameBytes(large, contentOf(served("resumed/a.bak"))));
    // What else is there is not looked at: ProFTPD may still write for the cancelled attempt when the next one is done.
    request.localPath = local("got");
    breaking.ClearCancel();
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, breaking.DownLoadSFtpFile(request, errorText)) << errorText;
    // A byte of what is there already is another now: it is not fetched again.
    large.front() = static_cast<char>(~large.front());
    for (const auto& each : std::filesystem::directory_iterator(local(""))) {
        if (each.path().filename().string().rfind(".got.", 0) == 0) {
            std::fstream(each.path(), std::ios::in | std::ios::out | std::ios::binary).put(large.front());
        }
    }
    expectOk(session.DownLoadSFtpFile(request, errorText), "the download that goes on");
    EXPECT_TRUE(sameBytes(large, contentOf(request.localPath)));
}

// A server may still write for an earlier attempt when the next one has seen how much there is.
TEST_P(Sessions, BeginAnewWhereAnEarlierAttemptIsStillAtWork)
{
    const std::string large = randomBytes(1000001);
    SessionOptions chosen = optionsHere();
    chosen.resume = true;
    bool hasGrown = false;
    chosen.progress = [&](const TransferProgress& now) {
        if (now.bytes > 0 && !hasGrown) {
            const std::filesystem::directory_iterator part(served("resumed"));
            std::filesystem::resize_file(part->path(), 2 * large.size());
            hasGrown = true;
        }
    };
    SFtpSession session(chosen);
    SFtpSession* running = nullptr;
    chosen.sendRate = 1000000;
    chosen.progress = [&running](const TransferProgress& now) {
        if (now.bytes > 300000) {
            running->Cancel();
        }
    };
    SFtpSession breaking(chosen);
    running = &breaking;
    keep("resumed/x", "");
    std::filesystem::remove(served("resumed/x"));
    aimAt("resumed/a.bak");
    request.localPath = local("sent");
    writeFile(request.localPath, large);
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, breaking.UploadFileToSFtpServer(request, errorText)) << errorText;
    expectOk(session.UploadFileToSFtpServer(request, errorText), "the upload that begins anew");
    EXPECT_TRUE(hasGrown);
    EXPECT_TRUE(sameBytes(large, contentOf(served("resumed/a.bak"))));
}

// The download that stops at the difference breaks its data connection off, after which servers may want another TLS
// session on the next one.
TEST_P(Sessions, BeginAnewWhereTheEndOfABrokenDownloadDiffers)
{
    const std::string large = randomBytes(3000001);
    SessionOptions chosen = optionsHere();
    chosen.resume = true;
    SFtpSession session(chosen);
    SFtpSession* running = nullptr;
    chosen.receiveRate = 1000000;
    chosen.progress = [&running](const TransferProgress& now) {
        if (now.bytes > 300000) {
            running->Cancel();
        }
    };
    SFtpSession breaking(chosen);
    running = &breaking;
    keep("resumed/a.bak", large);
    aimAt("resumed/a.bak");
    request.localPath = local("got");
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, breaking.DownLoadSFtpFile(request, errorText)) << errorText;
    for (const auto& each : std::filesystem::directory_iterator(local(""))) {
        if (each.path().filename().string().rfind(".got.", 0) == 0) {
            std::fstream file(each.path(), std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(-1, std::ios::end).put('!');
        }
    }
    expectOk(session.DownLoadSFtpFile(request, errorText), "the download that begins anew");
    EXPECT_TRUE(sameBytes(large, contentOf(request.localPath)));
    expectOk(session.DownLoadSFtpFile(request, errorText), "the next");
}

class SessionsOverSsh : public Sessions
{
};

// libssh2 sends more than 32700 bytes in pieces, after the first of which it gives up.
TEST_P(SessionsOverSsh, KeepInStepAfterTheLongestNames)
{
    SFtpSession session(optionsHere());
    keep("long/a.bak", "content");
    aimAt("");
    const std::string longest(8000 - (request.remotePath.size() - url("/").size()) - 1, 'x');
    aimAt(longest + "/");
    request.remoteFileName = request.localPath = std::string(8000, 'y');
    EXPECT_NE(0, session.ReNameSFtpFile(request, errorText));
    RemoteEntry entry;
    aimAt("long/a.bak");
    expectOk(session.StatEntry(request, entry, errorText), "stat");
    EXPECT_EQ("a.bak", entry.name);
}

class HostKeys : public RealServer
{
protected:
    // A file of known hosts that has this key for the server.
    std::string knowing(const std::string& key) const
    {
        std::string path = local("known_hosts");
        writeFile(path, "[localhost]:" + std::to_string(request.port) + " ecdsa-sha2-nistp256 " + key + "\n");
        return path;
    }

    std::string key() const
    {
        const std::string line = contentOf(local("daemon/host_key.pub"));
        const std::string::size_type begin = line.find(' ') + 1;
        return line.substr(begin, line.find_first_of(" \n", begin) - begin);
    }

    int test(const SessionOptions& options)
    {
        aimAt("");
        return SFtpSession(options).TestSConnect(request, errorText);
    }
};

TEST_P(HostKeys, AreComparedWithTheKnownOnes)
{
    SessionOptions options;
    options.knownHostsFile = knowing(key());
    EXPECT_EQ(0, test(options)) << errorText;

    std::string another = key();
    another[another.size() - 8] = another[another.size() - 8] == 'A' ? 'B' : 'A';
    options.knownHostsFile = knowing(another);
    options.acceptUnknownHostKey = true;
    EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, test(options));
    EXPECT_NE(std::string::npos, errorText.find("another one than in knownHostsFile")) << errorText;

    writeFile(options.knownHostsFile, "damaged\n" + contentOf(options.knownHostsFile));
    EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, test(options));
    EXPECT_NE(std::string::npos, errorText.find("line 1 of knownHostsFile cannot be read")) << errorText;

    options.knownHostsFile = local("no-such-file");
    EXPECT_EQ(0, test(options)) << errorText;
    options.acceptUnknownHostKey = false;
    EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, test(options));
    EXPECT_NE(std::string::npos, errorText.find("is unknown: SHA256:")) << errorText;

    SessionOptions wrong;
    wrong.hostKeySha256 = "SHA256:ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0";
    EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, test(wrong));
}

INSTANTIATE_TEST_SUITE_P(OfDebian, SessionsOverSsh, testing::ValuesIn(sshServers()), idOf);

INSTANTIATE_TEST_SUITE_P(OverSsh, HostKeys, testing::ValuesIn(sshServers()), idOf);

INSTANTIATE_TEST_SUITE_P(OfDebian, Sessions, testing::ValuesIn(servers()), idOf);

} // namespace
