// A session on every server: each operation works, round after round, over a connection that is kept.
#include "RealServer.h"

#include <SFtpSession.h>

#include <algorithm>
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
    SessionOptions options()
    {
        SessionOptions chosen;
        chosen.acceptUnknownHostKey = true;
        chosen.requireTls = server.dataTls != DataTls::None;
        return chosen;
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

TEST_P(Sessions, RunEveryOperationAgainAndAgain)
{
    SFtpSession session(options());
    keep("rounds/x", "");
    std::filesystem::remove(served("rounds/x"));
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        goRound(session);
    }
}

INSTANTIATE_TEST_SUITE_P(OfDebian, Sessions, testing::ValuesIn(servers()), idOf);

} // namespace
