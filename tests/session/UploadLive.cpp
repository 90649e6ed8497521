// What an upload promises: the old file or the new one, all of it, and nothing else.
#include "SessionLive.h"

#include <algorithm>
#include <filesystem>
#include <istream>
#include <sstream>
#include <streambuf>

namespace {

// Gives some bytes, then fails as a disk does.
class BreakingBuffer : public std::streambuf
{
protected:
    int_type underflow() override
    {
        if (m_given) {
            throw std::runtime_error("the disk is gone"); // an istream makes badbit of it
        }
        m_given = true;
        setg(m_bytes, m_bytes, m_bytes + sizeof m_bytes - 1);
        return traits_type::to_int_type(m_bytes[0]);
    }

private:
    char m_bytes[8] = "content";
    bool m_given = false;
};

class SessionUpload : public SessionLive
{
protected:
    SessionUpload()
    {
        writeFile(served("a.bak"), "the last one");
        writeFile(request.localPath, "content");
    }

    // The names in the served folder.
    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const auto& each : std::filesystem::directory_iterator(served(""))) {
            all.push_back(each.path().filename());
        }
        return all;
    }

    int upload(SFtpSession& session)
    {
        aimAt("/a.bak");
        request.localPath = local("file");
        return session.UploadFileToSFtpServer(request, errorText);
    }

    void expectTheOldFileAlone()
    {
        EXPECT_EQ("the last one", contentOf(served("a.bak")));
        EXPECT_EQ(std::vector<std::string>{"a.bak"}, names());
    }
};

} // namespace

TEST_F(SessionUpload, AStreamThatBreaksIsNotTakenForItsEnd)
{
    serve();
    aimAt("/a.bak");
    SFtpSession session;
    BreakingBuffer buffer;
    std::istream in(&buffer);
    EXPECT_EQ(CURLE_READ_ERROR, session.UploadFrom(request, in, errorText)) << errorText;
    EXPECT_NE(std::string::npos, errorText.find("the stream cannot be read")) << errorText;
    std::istringstream unusable("content");
    unusable.setstate(std::ios::failbit);
    EXPECT_EQ(CURLE_READ_ERROR, session.UploadFrom(request, unusable, errorText)) << errorText;
    expectTheOldFileAlone();
}

TEST_F(SessionUpload, BytesBeyondTheAnnouncedOnesAreNoticedWhereverReadingStops)
{
    serve();
    aimAt("/a.bak");
    SFtpSession session;
    std::size_t left = 8;
    const DataSource oneByOne = [&left](char* bytes, std::size_t) -> std::size_t {
        if (left == 0) {
            return 0;
        }
        --left;
        *bytes = 'x';
        return 1;
    };
    EXPECT_EQ(CURLE_READ_ERROR, session.UploadFrom(request, oneByOne, errorText, 7)) << errorText;
    EXPECT_NE(std::string::npos, errorText.find("the source has more than the 7 bytes that were announced"))
        << errorText;
    expectTheOldFileAlone();
}

TEST_F(SessionUpload, WhatTheSourceThrowsLeavesNothing)
{
    struct Own
    {
    };
    serve();
    aimAt("/a.bak");
    SFtpSession session;
    bool given = false;
    const DataSource source = [&given](char* bytes, std::size_t) -> std::size_t {
        if (given) {
            throw Own();
        }
        given = true;
        *bytes = 'x';
        return 1;
    };
    EXPECT_THROW(session.UploadFrom(request, source, errorText), Own);
    expectTheOldFileAlone();
}

TEST_F(SessionUpload, ASizeThatIsNoNumberProvesNothing)
{
    for (const char* const reply : {"213 abc", "213 ", "213 -7", "550 no such file", "200 ok"}) {
        SCOPED_TRACE(reply);
        config.faults.clear();
        misbehave(std::string("SIZE=reply:") + reply);
        serve();
        SFtpSession session;
        EXPECT_EQ(CURLE_PARTIAL_FILE, upload(session));
        EXPECT_NE(std::string::npos, errorText.find("the server does not report the size of what was sent"))
            << errorText;
        expectTheOldFileAlone();
        stopServing();
    }
}

TEST_F(SessionUpload, AServerWithoutSizeIsTakenAtItsWord)
{
    misbehave("SIZE=reply:502 not implemented");
    serve();
    SFtpSession session;
    EXPECT_EQ(0, upload(session)) << errorText;
    EXPECT_EQ("content", contentOf(served("a.bak")));
}

// As servers on other systems than Unix do.
TEST_F(SessionUpload, AServerThatDoesNotRenameOverAFileKeepsOneOfThem)
{
    misbehave("RNTO#1=reply:553 there is such a file");
    serve();
    {
        SFtpSession session;
        EXPECT_EQ(0, upload(session)) << errorText;
    }
    EXPECT_EQ("content", contentOf(served("a.bak")));
    EXPECT_EQ(std::vector<std::string>{"a.bak"}, names());
    EXPECT_EQ(1U, sessions().size()) << "the data had arrived when the server refused";
}

TEST_F(SessionUpload, TheOldFileComesBackWhereTheNewOneCannotTakeItsPlace)
{
    misbehave("RNTO#1=reply:553 no");
    misbehave("RNTO#3=reply:553 no");
    serve();
    SFtpSession session;
    EXPECT_EQ(CURLE_QUOTE_ERROR, upload(session)) << errorText;
    expectTheOldFileAlone();
}

TEST_F(SessionUpload, ADirectoryDoesNotGiveWay)
{
    serve();
    std::filesystem::create_directory(served("d"));
    writeFile(served("d/kept"), "kept");
    aimAt("/d");
    EXPECT_EQ(CURLE_QUOTE_ERROR, SFtpSession().UploadFileToSFtpServer(request, errorText)) << errorText;
    EXPECT_EQ("kept", contentOf(served("d/kept")));
    EXPECT_EQ(2U, names().size()) << "a.bak and d";
    // Not for a moment: whoever kills the upload finds it under its name.
    const Lines transcript = sessions().at(0);
    EXPECT_EQ(0, std::count(transcript.begin(), transcript.end(), "> RNFR d"));
}

TEST_F(SessionUpload, NothingGivesWayWhereTheServerDoesNotSayWhetherItIsADirectory)
{
    misbehave("1/CWD=drop");
    serve();
    std::filesystem::create_directory(served("d"));
    aimAt("/d");
    EXPECT_EQ(CURLE_QUOTE_ERROR, SFtpSession().UploadFileToSFtpServer(request, errorText));
    EXPECT_NE(std::string::npos, errorText.find("RNTO d")) << errorText;
    for (const Lines& each : sessions()) {
        EXPECT_EQ(0, std::count(each.begin(), each.end(), "> RNFR d"));
    }
}

TEST_F(SessionUpload, ALongNameHasATemporaryOneToo)
{
    serve();
    // 255 bytes, the most that a file system takes; those around the cut are of two bytes each.
    std::string name;
    for (int i = 0; i < 127; ++i) {
        name += "\xc3\xa4";
    }
    name += "x";
    aimAt("/" + name);
    SFtpSession session;
    EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    EXPECT_EQ("content", contentOf(served(name)));
    request.localPath = local(name);
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_EQ("content", contentOf(local(name)));
}

TEST_F(SessionUpload, NoSourceIsRefused)
{
    serve();
    aimAt("/a.bak");
    SFtpSession session;
    EXPECT_EQ(CURLE_BAD_FUNCTION_ARGUMENT, session.UploadFrom(request, DataSource(), errorText));
    EXPECT_EQ("A libcurl function was given a bad argument: source is empty", errorText);
    EXPECT_EQ(CURLE_BAD_FUNCTION_ARGUMENT, session.DownLoadTo(request, DataSink(), errorText));
    EXPECT_EQ("A libcurl function was given a bad argument: sink is empty", errorText);
    EXPECT_TRUE(sessions().empty());
}

// To libcurl, the numbers above the size of a buffer would mean: end, wait, or a mistake.
TEST_F(SessionUpload, ASourceCannotHaveMoreThanItWasAskedFor)
{
    serve();
    aimAt("/a.bak");
    SFtpSession session;
    for (const std::size_t returned :
         {std::size_t{CURL_READFUNC_ABORT}, std::size_t{CURL_READFUNC_PAUSE}, static_cast<std::size_t>(-1)}) {
        const std::string text = "the source has returned " + std::to_string(returned) + ", asked for ";
        for (const std::int64_t size : {-1, 0, 5}) {
            const auto source = [returned](char*, std::size_t) { return returned; };
            EXPECT_EQ(CURLE_READ_ERROR, session.UploadFrom(request, source, errorText, size)) << errorText;
            EXPECT_NE(std::string::npos, errorText.find(text)) << errorText;
        }
    }
    const auto nothing = [](char*, std::size_t) { return std::size_t{0}; };
    EXPECT_EQ(CURLE_BAD_FUNCTION_ARGUMENT, session.UploadFrom(request, nothing, errorText, -2));
    EXPECT_EQ("A libcurl function was given a bad argument: size is -2", errorText);
    expectTheOldFileAlone();
}
