// Times and checksums of files on the test server.
#include "SessionLive.h"

#include <algorithm>

namespace {

class SessionFactsLive : public SessionLive
{
protected:
    RemoteChecksum checksum;
    std::chrono::system_clock::time_point time;
};

} // namespace

TEST_F(SessionFactsLive, ATimeThatIsSetIsTold)
{
    serve();
    writeFile(served("a b"), "content");
    aimAt("/a b");
    {
        SFtpSession session;
        const auto chosen = std::chrono::system_clock::from_time_t(1700000000);
        EXPECT_EQ(0, session.SetModified(request, chosen, errorText)) << errorText;
        EXPECT_EQ(0, session.ReadModified(request, time, errorText)) << errorText;
        EXPECT_EQ(chosen, time);
        aimAt("/missing");
        EXPECT_EQ(CURLE_QUOTE_ERROR, session.SetModified(request, chosen, errorText));
        EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, session.ReadModified(request, time, errorText));
        EXPECT_EQ(chosen, time);
    }
    const Lines lines = sessions().at(0);
    const auto from = std::find(lines.begin(), lines.end(), "> MFMT 20231114221320 a b");
    EXPECT_TRUE(sameLines({"> MFMT 20231114221320 a b", "< 213 Modify=20231114221320; a b", "> MDTM a b",
                           "< 213 20231114221320", "> MFMT 20231114221320 missing", "< 550 no such file",
                           "> MDTM missing", "< 550 no such file", "> QUIT", "< 221 goodbye"},
                          Lines(from, lines.end())));
}

TEST_F(SessionFactsLive, ChecksumsAreTheServersOwn)
{
    const std::string sha = "ed7002b439e9ac845f22357d822bac1444730fbdb6016d3ec9432297b9ec9f73";
    for (const char* const offered : {"HASH", "XSHA256", "XCRC"}) {
        SCOPED_TRACE(offered);
        config.checksums = {offered};
        serve();
        writeFile(served("a b"), "content");
        aimAt("/a b");
        SFtpSession session;
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(0, session.ReadChecksum(request, checksum, errorText)) << errorText;
            const bool isCrc = offered == std::string("XCRC");
            EXPECT_EQ(isCrc ? ChecksumKind::Crc32 : ChecksumKind::Sha256, checksum.kind);
            EXPECT_EQ(isCrc ? "fec530a9" : sha, checksum.digits);
        }
        aimAt("/missing");
        EXPECT_EQ(CURLE_QUOTE_ERROR, session.ReadChecksum(request, checksum, errorText));
    }
}
