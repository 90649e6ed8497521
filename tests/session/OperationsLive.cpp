// What a session says to the server, and what files hold afterwards.
#include "SessionLive.h"

#include "support/CurlRelease.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

class SessionOperations : public SessionLive
{
};

// A temporary name has twelve digits by chance.
Lines withoutChance(Lines lines)
{
    for (std::string& line : lines) {
        const std::string::size_type end = line.find(".part");
        if (end != std::string::npos) {
            line.replace(end - 12, 12, "XXXXXXXXXXXX");
        }
    }
    return lines;
}

Lines with(std::vector<Lines> groups)
{
    Lines all;
    for (const Lines& each : groups) {
        all = all + each;
    }
    return all;
}

} // namespace

TEST_F(SessionOperations, AnUploadIsRenamedIntoPlaceWhenItsSizeIsRight)
{
    serve();
    std::filesystem::create_directory(served("weekly"));
    writeFile(request.localPath, "content");
    aimAt("/weekly/a b.bak");
    {
        SFtpSession session;
        EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    }
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("content", contentOf(served("weekly/a b.bak")));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("weekly")), {}));
    EXPECT_EQ(
        std::vector<Lines>{with({loginOverTls(),
                                 {"> CWD weekly", "< 250 directory changed"},
                                 passive(),
                                 {"> TYPE I", "< 200 type set"},
                                 data("STOR .a b.bak.XXXXXXXXXXXX.part", 7, "received"),
                                 {"> SIZE .a b.bak.XXXXXXXXXXXX.part", "< 213 7", "> RNFR .a b.bak.XXXXXXXXXXXX.part",
                                  "< 350 the new name, please", "> RNTO a b.bak", "< 250 renamed"},
                                 quit()})},
        std::vector<Lines>{withoutChance(sessions().at(0))});
    EXPECT_EQ(Lines{"2 SFtpSession::UploadFileToSFtpServer(): " + request.remotePath + ": end"}, live::takeRecords());
    EXPECT_EQ("", out->content() + err->content());
}

TEST_F(SessionOperations, AnUploadMakesMissingDirectories)
{
    serve();
    writeFile(request.localPath, "content");
    aimAt("/new/folder/a.bak");
    SFtpSession session;
    EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    EXPECT_EQ("content", contentOf(served("new/folder/a.bak")));
}

TEST_F(SessionOperations, ALostEndIsNoticedAndNothingStays)
{
    misbehave("DATA=claim-after:3");
    serve();
    writeFile(served("a.bak"), "the last one");
    writeFile(request.localPath, "content");
    aimAt("/a.bak");
    SFtpSession session;
    const int code = session.UploadFileToSFtpServer(request, errorText);
    EXPECT_TRUE(code == CURLE_PARTIAL_FILE || code == CURLE_SEND_ERROR) << code << errorText;
    EXPECT_EQ("the last one", contentOf(served("a.bak")));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("")), {}));
}

TEST_F(SessionOperations, ARefusedUploadTellsTheServersReply)
{
    misbehave("STOR=reply:552 Quota exceeded");
    serve();
    writeFile(request.localPath, "content");
    aimAt("/a.bak");
    SFtpSession session;
    EXPECT_EQ(CURLE_UPLOAD_FAILED, session.UploadFileToSFtpServer(request, errorText));
    EXPECT_EQ("Upload failed (at start/before it took off): Failed FTP upload: 552 (the server's last reply: 552 Quota "
              "exceeded)",
              errorText);
}

TEST_F(SessionOperations, ADownloadTakesItsPlaceWhenItIsWhole)
{
    serve();
    writeFile(served("a.bak"), "content");
    writeFile(request.localPath, "before");
    aimAt("/a.bak");
    {
        SFtpSession session;
        EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
        EXPECT_EQ("content", contentOf(request.localPath));
        aimAt("/missing.bak");
        EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, session.DownLoadSFtpFile(request, errorText));
    }
    EXPECT_EQ("content", contentOf(request.localPath));
    const Lines expected = with({loginOverTls(),
                                 passive(),
                                 {"> TYPE I", "< 200 type set", "> SIZE a.bak", "< 213 7"},
                                 data("RETR a.bak", 7, "sent"),
                                 passive(),
                                 {"> SIZE missing.bak", "< 550 no such file"},
                                 quit()});
    EXPECT_TRUE(sameLines(expected, sessions().at(0)));
}

TEST_F(SessionOperations, ABrokenDownloadLeavesTheFileAsItWas)
{
    misbehave("DATA=drop-after:3");
    serve();
    writeFile(served("a.bak"), "content");
    writeFile(request.localPath, "before");
    aimAt("/a.bak");
    SFtpSession session;
    EXPECT_EQ(brokenData(), session.DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_EQ("before", contentOf(request.localPath));
}

TEST_F(SessionOperations, NamesMayHoldBlanks)
{
    serve();
    writeFile(served("a b"), "content");
    aimAt("/");
    request.remoteFileName = "a b";
    request.localPath = "c d";
    SFtpSession session;
    EXPECT_EQ(0, session.ReNameSFtpFile(request, errorText)) << errorText;
    EXPECT_EQ("content", contentOf(served("c d")));
    request.remoteFileName = "c d";
    EXPECT_EQ(0, session.DelSFtpFile(request, errorText)) << errorText;
    EXPECT_FALSE(exists(served("c d")));
    EXPECT_EQ(CURLE_QUOTE_ERROR, session.DelSFtpFile(request, errorText));
    EXPECT_EQ(
        "Quote command returned error: QUOT string not accepted: DELE c d (the server's last reply: 550 no such file)",
        errorText);
}

TEST_F(SessionOperations, ARefusedRenameNamesTheCommandThatWasRefused)
{
    misbehave("RNTO=reply:553 not that name");
    serve();
    writeFile(served("a"), "content");
    aimAt("/");
    SFtpSession session;
    request.localPath = "b";
    request.remoteFileName = "missing";
    EXPECT_EQ(CURLE_QUOTE_ERROR, session.ReNameSFtpFile(request, errorText));
    EXPECT_EQ("Quote command returned error: QUOT string not accepted: RNFR missing (the server's last reply: 550 no "
              "such file)",
              errorText);
    request.remoteFileName = "a";
    EXPECT_EQ(CURLE_QUOTE_ERROR, session.ReNameSFtpFile(request, errorText));
    EXPECT_EQ("Quote command returned error: QUOT string not accepted: RNTO b (the server's last reply: 553 not that "
              "name)",
              errorText);
}

TEST_F(SessionOperations, EntriesComeByFactsOrByLongLines)
{
    for (const std::string features : {"", "FEAT=reply:500 unknown command"}) {
        SCOPED_TRACE(features);
        config.faults.clear();
        if (!features.empty()) {
            misbehave(features);
        }
        serve();
        std::filesystem::create_directories(served("folder/d"));
        writeFile(served("folder/a b"), "12345");
        aimAt("/folder");
        SFtpSession session;
        EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
        ASSERT_EQ(2U, entries.size());
        EXPECT_EQ("a b", entries[0].name);
        EXPECT_EQ(EntryKind::File, entries[0].kind);
        EXPECT_EQ(5, entries[0].size);
        EXPECT_EQ(features.empty(), entries[0].modified.has_value());
        EXPECT_EQ("d", entries[1].name);
        EXPECT_EQ(EntryKind::Directory, entries[1].kind);
        EXPECT_EQ(-1, entries[1].size);
        aimAt("/folder/a b");
        EXPECT_EQ(0, session.StatEntry(request, entry, errorText)) << errorText;
        EXPECT_EQ("a b", entry.name);
        EXPECT_EQ(5, entry.size);
        EXPECT_EQ(std::chrono::system_clock::from_time_t(1767225600), entry.modified);
        aimAt("/folder/d");
        EXPECT_EQ(0, session.StatEntry(request, entry, errorText)) << errorText;
        EXPECT_EQ(EntryKind::Directory, entry.kind);
        aimAt("/folder/missing");
        EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, session.StatEntry(request, entry, errorText));
    }
}

// Some servers send one on the way into a directory. With this reply, the test server does not go there.
TEST_F(SessionOperations, AMessageIsNoEntry)
{
    misbehave("CWD=reply:250-welcome\\r\\n  read the README\\r\\n250 there");
    serve();
    writeFile(served("a.bak"), "content");
    SFtpSession session;
    aimAt("/");
    EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
    aimAt("/d/a.bak");
    EXPECT_EQ(0, session.StatEntry(request, entry, errorText)) << errorText;
    EXPECT_EQ(EntryKind::File, entry.kind);
    EXPECT_EQ(7, entry.size);
}

// libcurl would take 5 for the size, and cut the file.
TEST_F(SessionOperations, ASizeThatIsNoNumberIsNotDownloadedBy)
{
    misbehave("SIZE=reply:213 -5");
    serve();
    writeFile(served("a.bak"), "content");
    writeFile(local("got"), "before");
    aimAt("/a.bak");
    request.localPath = local("got");
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, SFtpSession().DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_EQ("before", contentOf(local("got")));
}

// Its listing is empty, and the reply is a success.
TEST_F(SessionOperations, ADirectoryThatVsftpdMayNotReadIsAFailure)
{
    misbehave("DONE=reply:226 Transfer done (but failed to open directory).");
    serve();
    aimAt("/");
    writeFile(request.localPath, "as it was");
    SFtpSession session;
    EXPECT_EQ(CURLE_FTP_COULDNT_RETR_FILE, session.ListEntries(request, entries, errorText));
    EXPECT_EQ(std::string(curl_easy_strerror(CURLE_FTP_COULDNT_RETR_FILE)) +
                  " (the server's last reply: 226 Transfer done (but failed to open directory).)",
              errorText);
    EXPECT_EQ(CURLE_FTP_COULDNT_RETR_FILE, session.Listsftpdir(request, errorText));
    EXPECT_EQ("as it was", contentOf(request.localPath));
}

TEST_F(SessionOperations, ARefusalIsNoFileAndNoEmptyDirectory)
{
    misbehave("1/FEAT=reply:500 unknown command");
    misbehave("SIZE=reply:451 not now");
    misbehave("MLSD=reply:450 not now");
    misbehave("LIST=reply:450 not now");
    serve();
    writeFile(served("a.bak"), "content");
    SFtpSession session;
    aimAt("/missing.bak");
    EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, session.StatEntry(request, entry, errorText));
    EXPECT_EQ("Remote file not found: the server reports neither its size nor its time", errorText);
    aimAt("/a.bak");
    EXPECT_EQ(0, session.StatEntry(request, entry, errorText)) << errorText;
    EXPECT_EQ(-1, entry.size);
    aimAt("/");
    entries = {entry};
    EXPECT_EQ(CURLE_FTP_COULDNT_RETR_FILE, session.ListEntries(request, entries, errorText)) << errorText;
    SFtpSession another;
    EXPECT_EQ(CURLE_FTP_COULDNT_RETR_FILE, another.ListEntries(request, entries, errorText)) << errorText;
    EXPECT_EQ(1U, entries.size());
}

TEST_F(SessionOperations, DirectoriesAreMadeAndRemoved)
{
    serve();
    aimAt("/new dir/");
    SFtpSession session;
    EXPECT_EQ(0, session.MakeSFtpDir(request, errorText)) << errorText;
    EXPECT_TRUE(std::filesystem::is_directory(served("new dir")));
    EXPECT_EQ(0, session.RemoveSFtpDir(request, errorText)) << errorText;
    EXPECT_FALSE(exists(served("new dir")));
    EXPECT_EQ(CURLE_QUOTE_ERROR, session.RemoveSFtpDir(request, errorText));
}

TEST_F(SessionOperations, StreamsOfKnownAndUnknownSize)
{
    serve();
    aimAt("/a.bak");
    SFtpSession session;
    for (const std::int64_t size : {-1, 7}) {
        std::istringstream in("content");
        EXPECT_EQ(0, session.UploadFrom(request, in, errorText, size)) << errorText;
        std::ostringstream out_;
        EXPECT_EQ(0, session.DownLoadTo(request, out_, errorText)) << errorText;
        EXPECT_EQ("content", out_.str());
    }
    for (const std::int64_t size : {6, 8}) {
        SCOPED_TRACE(size);
        std::istringstream in("other..");
        EXPECT_EQ(CURLE_READ_ERROR, session.UploadFrom(request, in, errorText, size)) << errorText;
        EXPECT_EQ("content", contentOf(served("a.bak")));
    }
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("")), {}));
}

TEST_F(SessionOperations, AStreamThatCannotBeWrittenIsNoticed)
{
    serve();
    writeFile(served("a.bak"), "content");
    aimAt("/a.bak");
    std::ofstream full("/dev/full");
    EXPECT_EQ(CURLE_WRITE_ERROR, SFtpSession().DownLoadTo(request, full, errorText)) << errorText;
}

TEST_F(SessionOperations, WhatTheCallersFunctionsThrowPasses)
{
    struct Own
    {
    };
    serve();
    writeFile(served("a.bak"), "content");
    aimAt("/a.bak");
    SFtpSession session;
    EXPECT_THROW(session.DownLoadTo(
                     request, [](const char*, std::size_t) -> bool { throw Own(); }, errorText),
                 Own);
    EXPECT_THROW(session.UploadFrom(
                     request, [](char*, std::size_t) -> std::size_t { throw Own(); }, errorText),
                 Own);
    EXPECT_EQ("content", contentOf(served("a.bak")));
    EXPECT_EQ(CURLE_WRITE_ERROR, session.DownLoadTo(
                                     request, [](const char*, std::size_t) { return false; }, errorText));
    aimAt("/");
    EXPECT_EQ(0, session.TestSConnect(request, errorText)) << "the session goes on";
}

// Only a refusal proves that there is no such directory.
TEST_F(SessionOperations, WhatIsNotAnsweredIsNotMissing)
{
    for (const std::string fault : {"CWD=drop", "CWD=last:421 closing"}) {
        SCOPED_TRACE(fault);
        config.faults.clear();
        misbehave(fault);
        serve();
        std::filesystem::create_directories(served("d"));
        aimAt("/d");
        const int expected = fault == "CWD=drop" ? CURLE_RECV_ERROR : CURLE_OPERATION_TIMEDOUT;
        EXPECT_EQ(expected, SFtpSession().StatEntry(request, entry, errorText)) << errorText;
        stopServing();
    }
}
