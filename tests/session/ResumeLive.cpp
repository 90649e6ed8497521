// Transfers that go on where an earlier one broke off.
#include "SessionLive.h"

#include "support/Codes.h"
#include "support/CurlRelease.h"
#include "support/FileSizeLimit.h"

#include <algorithm>
#include <filesystem>

namespace {

constexpr std::size_t kBytes = 300000;
constexpr std::size_t kBroken = 200000;
constexpr std::size_t kOverlap = 65536;

class SessionResume : public SessionLive
{
protected:
    SessionResume()
    {
        options.resume = true;
        options.progress = [this](const TransferProgress& now) { last = now; };
        for (std::size_t i = 0; i < kBytes; ++i) {
            content += static_cast<char>(i * 7 + i / 251);
        }
    }

    static std::vector<std::string> namesIn(const std::string& folder)
    {
        std::vector<std::string> names;
        for (const auto& each : std::filesystem::directory_iterator(folder)) {
            names.push_back(each.path().filename());
        }
        names.erase(std::remove(names.begin(), names.end(), "default-trust.pem"), names.end());
        std::sort(names.begin(), names.end());
        return names;
    }

    static std::string unfinishedIn(const std::string& folder)
    {
        std::string found;
        for (const std::string& name : namesIn(folder)) {
            if (name.size() > 5 && name.substr(name.size() - 5) == ".part") {
                found = folder + "/" + name;
            }
        }
        return found;
    }

    int download()
    {
        aimAt("/a.bak");
        request.localPath = local("got");
        return SFtpSession(options).DownLoadSFtpFile(request, errorText);
    }

    int upload()
    {
        aimAt("/a.bak");
        request.localPath = local("file");
        return SFtpSession(options).UploadFileToSFtpServer(request, errorText);
    }

    void breakADownload()
    {
        misbehave("1/DATA=drop-after:" + std::to_string(kBroken));
        serve();
        writeFile(served("a.bak"), content);
        writeFile(local("got"), "before");
        EXPECT_EQ(brokenData(), download()) << errorText;
        EXPECT_EQ("before", contentOf(local("got")));
        EXPECT_EQ(content.substr(0, kBroken), contentOf(unfinishedIn(local(""))));
    }

    void breakAnUpload(const std::string& fault)
    {
        misbehave(fault);
        serve();
        writeFile(served("a.bak"), "before");
        writeFile(local("file"), content);
        EXPECT_NE(0, upload());
        EXPECT_EQ("before", contentOf(served("a.bak")));
    }

    // The lines that tell of moved bytes.
    static Lines moved(const Lines& lines)
    {
        Lines found;
        for (const std::string& line : lines) {
            if (line.find(" bytes ") != std::string::npos || line.compare(0, 6, "> REST") == 0 ||
                line.compare(0, 6, "> APPE") == 0 || line.compare(0, 6, "> STOR") == 0) {
                found.push_back(line.substr(0, line.find(" .")));
            }
        }
        return found;
    }

    void expectReportOfTheEnd() const
    {
        EXPECT_EQ(static_cast<std::int64_t>(kBytes), last.bytes);
        EXPECT_EQ(static_cast<std::int64_t>(kBytes), last.total);
        EXPECT_EQ(TransferPhase::Finishing, last.phase);
    }

    SessionOptions options;
    TransferProgress last; // as reported
    std::string content;
};

std::string bytes(std::size_t count, const char* direction)
{
    return "= " + std::to_string(count) + " bytes " + direction;
}

} // namespace

TEST_F(SessionResume, ADownloadFetchesTheRest)
{
    breakADownload();
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
    EXPECT_EQ(Lines{"got"}, namesIn(local("")));
    const std::size_t offset = kBroken - kOverlap;
    EXPECT_TRUE(sameLines(Lines{"> REST 0", "> REST " + std::to_string(offset), bytes(kBytes - offset, "sent")},
                          moved(sessions().at(1))));
}

TEST_F(SessionResume, ADownloadThatBreaksAgainKeepsWhatItHas)
{
    misbehave("2/DATA=drop-after:100000");
    breakADownload();
    EXPECT_EQ(nameOf(brokenData()), nameOf(download())) << errorText;
    EXPECT_EQ("before", contentOf(local("got")));
    EXPECT_TRUE(sameBytes(content.substr(0, kBroken - kOverlap + 100000), contentOf(unfinishedIn(local("")))));
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
}

TEST_F(SessionResume, NothingIsBegunOfAFileThatIsMissingOrTooLarge)
{
    serve();
    EXPECT_EQ("CURLE_REMOTE_FILE_NOT_FOUND", nameOf(download())) << errorText;
    writeFile(served("db"), "");
    std::filesystem::resize_file(served("db"), 104857600);
    aimAt("/db");
    request.localPath = local("RetentionDB.db");
    EXPECT_EQ("CURLE_FILESIZE_EXCEEDED", nameOf(SFtpSession(options).DownLoadSFtpFile(request, errorText)));
    EXPECT_EQ(std::vector<std::string>{}, namesIn(local("")));
}

TEST_F(SessionResume, ADownloadOfAFileThatChangesMeanwhileFails)
{
    misbehave("SIZE#1=reply:213 " + std::to_string(kBytes + 1));
    serve();
    writeFile(served("a.bak"), content);
    EXPECT_EQ("CURLE_PARTIAL_FILE", nameOf(download())) << errorText;
    EXPECT_EQ(std::vector<std::string>{}, namesIn(local("")));
}

TEST_F(SessionResume, ADownloadWhoseEndDiffersBeginsAnew)
{
    breakADownload();
    writeFile(unfinishedIn(local("")), content.substr(0, kBroken - 1) + "!");
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
    EXPECT_EQ(Lines{"got"}, namesIn(local("")));
}

TEST_F(SessionResume, AFileThatChangedOnTheServerBeginsAnew)
{
    breakADownload();
    content[0] = '!';
    content += "more";
    writeFile(served("a.bak"), content);
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
}

TEST_F(SessionResume, ADownloadThatLacksNothingButItsPlace)
{
    breakADownload();
    writeFile(unfinishedIn(local("")), content);
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
    EXPECT_EQ(bytes(kOverlap, "sent"), moved(sessions().at(1)).back());
}

TEST_F(SessionResume, WithoutRestADownloadBeginsAnew)
{
    misbehave("2/REST#2=reply:502 not implemented");
    breakADownload();
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
}

TEST_F(SessionResume, WhereTheServerSendsNoMiddleADownloadBeginsAnew)
{
    for (const std::string reply : {"554 cannot restart", "550 cannot restart"}) {
        SCOPED_TRACE(reply);
        config.faults.clear();
        misbehave("2/RETR#1=reply:" + reply);
        breakADownload();
        EXPECT_EQ(0, download()) << errorText;
        EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
        EXPECT_EQ(Lines{"got"}, namesIn(local("")));
        EXPECT_EQ(bytes(kBytes, "sent"), moved(sessions().back()).back());
        stopServing();
    }
}

TEST_F(SessionResume, ADownloadThatIsRefusedForNowKeepsWhatItHas)
{
    misbehave("2/RETR#1=reply:450 not now");
    breakADownload();
    EXPECT_EQ("CURLE_FTP_COULDNT_RETR_FILE", nameOf(download())) << errorText;
    EXPECT_TRUE(sameBytes(content.substr(0, kBroken), contentOf(unfinishedIn(local("")))));
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
}

// The server sends as many bytes as are lacking, but from the beginning.
TEST_F(SessionResume, WhereRestIsIgnoredADownloadThatBeginsAsItEndsBeginsAnew)
{
    std::fill(content.begin(), content.begin() + kBroken, '\0');
    misbehave("2/REST#2=reply:350 restarting");
    breakADownload();
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
    EXPECT_EQ(bytes(kBytes, "sent"), moved(sessions().at(1)).back());
}

TEST_F(SessionResume, NothingStaysOfADownloadThatHasNotBegun)
{
    misbehave("RETR=reply:450 not now");
    serve();
    writeFile(served("a.bak"), content);
    EXPECT_NE(0, download());
    EXPECT_EQ(Lines{}, namesIn(local("")));
}

TEST_F(SessionResume, WhereTheServerReportsNeitherSizeNorTimeTransfersBeginAnew)
{
    misbehave("SIZE=reply:502 not implemented");
    misbehave("MDTM=reply:502 not implemented");
    serve();
    writeFile(local("file"), content);
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
    EXPECT_EQ((Lines{"file", "got"}), namesIn(local("")));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
}

// A file that has changed may have the same size, and the same end.
TEST_F(SessionResume, WhereTheServerReportsNoTimeADownloadBeginsAnew)
{
    misbehave("MDTM=reply:502 not implemented");
    misbehave("1/DATA=drop-after:" + std::to_string(kBroken));
    serve();
    writeFile(served("a.bak"), content);
    writeFile(local("got"), "before");
    EXPECT_EQ(brokenData(), download()) << errorText;
    EXPECT_EQ(Lines{"got"}, namesIn(local("")));
    content[0] = '!';
    writeFile(served("a.bak"), content);
    EXPECT_EQ(0, download()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
}

// A server must not fill the disk with more than the size by which the file was let in.
TEST_F(SessionResume, ADownloadOfAFileThatHasGrownEndsAtItsSize)
{
    misbehave("2/SIZE#1=reply:213 " + std::to_string(kBytes));
    breakADownload();
    writeFile(served("a.bak"), content + std::string(2 * kBytes, 'x'));
    {
        const FileSizeLimit limit(kBytes);
        EXPECT_EQ(CURLE_PARTIAL_FILE, download());
    }
    EXPECT_EQ(0U, errorText.find("Transferred a partial file: the file has changed on the server meanwhile"))
        << errorText;
    EXPECT_EQ("before", contentOf(local("got")));
    EXPECT_EQ(Lines{"got"}, namesIn(local("")));
}

TEST_F(SessionResume, AnUploadSendsTheRest)
{
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(content.substr(0, kBroken), contentOf(unfinishedIn(served(""))));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_TRUE(sameLines(Lines{"> REST 0", "> REST " + std::to_string(kBroken - kOverlap), bytes(kOverlap, "sent"),
                                "> APPE", bytes(kBytes - kBroken, "received")},
                          moved(sessions().at(1))));
}

// A connection that breaks says nothing about what is there.
TEST_F(SessionResume, AnUploadThatBreaksBeforeItGoesOnKeepsWhatItHas)
{
    for (const std::string fault :
         {"2/DATA=reset-after:1000", "2/RETR=drop", "2/RETR=last:421 closing", "2/APPE=last:421 closing"}) {
        SCOPED_TRACE(fault);
        config.faults.clear();
        misbehave(fault);
        breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
        EXPECT_NE(0, upload());
        EXPECT_TRUE(sameBytes(content.substr(0, kBroken), contentOf(unfinishedIn(served("")))));
        EXPECT_EQ(0, upload()) << errorText;
        EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
        stopServing();
    }
}

TEST_F(SessionResume, AnUploadWhoseEndDiffersBeginsAnew)
{
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    writeFile(unfinishedIn(served("")), content.substr(0, kBroken - 1) + "!");
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_EQ(bytes(kBytes, "received"), moved(sessions().at(1)).back());
}

TEST_F(SessionResume, WhereTheServerSendsNoMiddleAnUploadBeginsAnew)
{
    misbehave("2/RETR=reply:550 no reading");
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_EQ(bytes(kBytes, "received"), moved(sessions().back()).back());
}

TEST_F(SessionResume, AnUploadThatLacksNothingButItsPlace)
{
    breakAnUpload("1/RNFR=drop");
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_EQ(bytes(kOverlap, "sent"), moved(sessions().at(1)).back());
}

TEST_F(SessionResume, WhereAppendingIsRefusedAnUploadBeginsAnew)
{
    misbehave("APPE=reply:550 no appending");
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
}

// The last bytes are asked for, and the whole file comes.
TEST_F(SessionResume, WhereRestIsIgnoredAnUploadBeginsAnew)
{
    misbehave("2/REST#2=reply:350 restarting");
    misbehave("2/SIZE#2=reply:550 not now"); // with the size, libcurl would take no more bytes than it expects
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_EQ(bytes(kBytes, "received"), moved(sessions().back()).back());
}

// libcurl has all the bytes that it expects, closes, and the server could not send the others. After that data
// connection, servers may want another TLS session than libcurl has.
TEST_F(SessionResume, WhereRestIsIgnoredAndTheRestBrokenOffAnUploadBeginsAnew)
{
    misbehave("2/REST#2=reply:350 restarting");
    misbehave("2/DONE=reply:426 broken off");
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    ASSERT_EQ(3U, sessions().size());
    EXPECT_EQ(bytes(kBytes, "received"), moved(sessions().at(2)).back());
}

TEST_F(SessionResume, AnUploadThatDoesNotFitWhatWasThereBeginsAnew)
{
    misbehave("2/SIZE#3=reply:213 5");
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    ASSERT_EQ(3U, sessions().size());
    EXPECT_EQ(bytes(kBytes - kBroken, "received"), moved(sessions().at(1)).back());
    EXPECT_EQ(bytes(kBytes, "received"), moved(sessions().at(2)).back());
}

// Between two questions for the size of what is there.
TEST_F(SessionResume, AnUploadBeginsAnewWhereWhatWasThereShrinks)
{
    misbehave("2/SIZE#2=reply:213 5");
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_EQ(bytes(kBytes, "received"), moved(sessions().back()).back());
}

TEST_F(SessionResume, ALocalFileThatChangedBeginsAnew)
{
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    content[0] = '!';
    std::filesystem::remove(local("file"));
    writeFile(local("file"), content);
    EXPECT_EQ(0, upload()) << errorText;
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
}

TEST_F(SessionResume, AWrongSizeIsNotGoneOnWith)
{
    breakAnUpload("1/SIZE#2=reply:213 5");
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
}

TEST_F(SessionResume, ADownloadTellsTheProgressUpToTheEnd)
{
    breakADownload();
    EXPECT_EQ(0, download()) << errorText;
    expectReportOfTheEnd();
}

TEST_F(SessionResume, AnUploadThatLacksItsNameTellsTheProgressUpToTheEnd)
{
    breakAnUpload("1/RNTO=drop");
    EXPECT_EQ(0, upload()) << errorText;
    expectReportOfTheEnd();
}

TEST_F(SessionResume, AnUploadTellsTheWholeFilesProgressWhileTheEndIsCompared)
{
    misbehave("2/DATA#1=slow:100000");
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    std::vector<TransferProgress> told;
    options.progress = [&told](const TransferProgress& now) { told.push_back(now); };
    EXPECT_EQ(0, upload()) << errorText;
    told.erase(told.begin()); // before the size of what is there is known
    EXPECT_LT(1U, told.size());
    std::int64_t bytes = kBroken - kOverlap;
    for (const TransferProgress& each : told) {
        EXPECT_EQ(static_cast<std::int64_t>(kBytes), each.total);
        EXPECT_LE(bytes, each.bytes);
        bytes = each.bytes;
    }
}

TEST_F(SessionResume, WithoutTheOptionNothingStays)
{
    options.resume = false;
    breakAnUpload("1/DATA=drop-after:" + std::to_string(kBroken));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
    EXPECT_EQ(0, upload()) << errorText;
}

// The second call is made while the first one is under way.
TEST_F(SessionResume, TwoCallsForOneFileLeaveEachOtherAlone)
{
    serve();
    writeFile(local("file"), content);
    aimAt("/a.bak");
    bool within = false;
    SFtpSession* running = nullptr;
    options.progress = [&](const TransferProgress& now) {
        if (!within && now.bytes > 0) {
            within = true;
            std::string text;
            SFtpRequest same = request;
            EXPECT_EQ(0, same.localPath == local("got") ? running->DownLoadSFtpFile(same, text)
                                                        : running->UploadFileToSFtpServer(same, text))
                << text;
        }
    };
    SFtpSession session(options);
    running = &session;
    request.localPath = local("file");
    EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    EXPECT_TRUE(within);
    EXPECT_TRUE(sameBytes(content, contentOf(served("a.bak"))));
    within = false;
    request.localPath = local("got");
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_TRUE(within);
    EXPECT_TRUE(sameBytes(content, contentOf(local("got"))));
    EXPECT_EQ((Lines{"file", "got"}), namesIn(local("")));
    EXPECT_EQ(Lines{"a.bak"}, namesIn(served("")));
}
