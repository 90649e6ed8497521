// What operations cost over a connection that has served before: each command is a round trip.
#include "SessionLive.h"

#include <filesystem>

namespace {

class SessionWarm : public SessionLive
{
protected:
    SessionWarm()
    {
        std::filesystem::create_directory(served("d"));
        writeFile(served("d/a.bak"), "content");
        writeFile(local("file"), "content");
    }

    /// The commands of the second of two calls, the name of a temporary file as "TEMPORARY".
    template <typename Call>
    Lines secondCommands(const Call& call)
    {
        serve();
        {
            SFtpSession session(options);
            EXPECT_EQ(0, call(session)) << errorText;
            aimAt("/d/mark");
            EXPECT_EQ(CURLE_QUOTE_ERROR, session.RemoveSFtpDir(request, errorText));
            EXPECT_EQ(0, call(session)) << errorText;
        }
        const std::vector<Lines> all = sessions();
        stopServing();
        EXPECT_EQ(1U, all.size());
        Lines commands;
        for (const std::string& line : all.at(0)) {
            if (line == "> RMD mark") {
                commands.clear();
            } else if (line.compare(0, 2, "> ") == 0 && line != "> QUIT") {
                const std::string::size_type name = line.find(" .");
                commands.push_back(name == std::string::npos ? line : line.substr(0, name) + " TEMPORARY");
            }
        }
        return commands;
    }

    SessionOptions options;
};

} // namespace

TEST_F(SessionWarm, AListTakesTwoCommands)
{
    EXPECT_EQ((Lines{"> EPSV", "> NLST"}), secondCommands([this](SFtpSession& session) {
                  aimAt("/d/");
                  request.localPath = local("names");
                  return session.Listsftpdir(request, errorText);
              }));
    EXPECT_EQ((Lines{"> EPSV", "> MLSD"}), secondCommands([this](SFtpSession& session) {
                  aimAt("/d/");
                  return session.ListEntries(request, entries, errorText);
              }));
}

TEST_F(SessionWarm, ADownloadTakesThree)
{
    EXPECT_EQ((Lines{"> EPSV", "> SIZE a.bak", "> RETR a.bak"}), secondCommands([this](SFtpSession& session) {
                  aimAt("/d/a.bak");
                  request.localPath = local("got");
                  return session.DownLoadSFtpFile(request, errorText);
              }));
}

// Verifying and replacing have their price, because libcurl waits for each reply before it sends the next command.
TEST_F(SessionWarm, AnUploadTakesTwoToFive)
{
    const auto upload = [this](SFtpSession& session) {
        aimAt("/d/up.bak");
        request.localPath = local("file");
        return session.UploadFileToSFtpServer(request, errorText);
    };
    EXPECT_EQ((Lines{"> EPSV", "> STOR TEMPORARY", "> SIZE TEMPORARY", "> RNFR TEMPORARY", "> RNTO up.bak"}),
              secondCommands(upload));
    options.verifyUpload = false;
    EXPECT_EQ((Lines{"> EPSV", "> STOR TEMPORARY", "> RNFR TEMPORARY", "> RNTO up.bak"}), secondCommands(upload));
    options.atomicUpload = false;
    EXPECT_EQ((Lines{"> EPSV", "> STOR up.bak"}), secondCommands(upload));
    options.verifyUpload = true;
    EXPECT_EQ((Lines{"> EPSV", "> STOR up.bak", "> SIZE up.bak"}), secondCommands(upload));
}

TEST_F(SessionWarm, NothingElseIsAsked)
{
    EXPECT_EQ((Lines{"> EPSV", "> MLSD", "> MLST a.bak"}), secondCommands([this](SFtpSession& session) {
                  aimAt("/d/");
                  const int code = session.ListEntries(request, entries, errorText);
                  aimAt("/d/a.bak");
                  return code != 0 ? code : session.StatEntry(request, entry, errorText);
              }));
    EXPECT_EQ((Lines{"> RNFR a.bak", "> RNTO a.bak"}), secondCommands([this](SFtpSession& session) {
                  aimAt("/d/");
                  request.remoteFileName = request.localPath = "a.bak";
                  return session.ReNameSFtpFile(request, errorText);
              }));
    EXPECT_EQ(Lines{"> NOOP"}, secondCommands([this](SFtpSession& session) {
                  aimAt("/d/");
                  return session.TestSConnect(request, errorText);
              }));
}
