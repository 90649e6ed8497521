// Times and checksums: what a session asks for by what the server offers, and what it makes of the replies.
#include "OperationCalls.h"
#include "SessionContract.h"

namespace {

class SessionFacts : public SessionContract
{
protected:
    // The commands of a call, from the first feature that is asked for.
    Lines commandsOf(const std::string& function, int expected = CURLE_OK)
    {
        Lines told;
        for (const std::string& line : journalOfCall(operationCall(function).run, expected)) {
            if (line.rfind("1 PREQUOTE = [*", 0) == 0) {
                told.push_back("[" + line.substr(15));
            } else if (line.rfind("1 POSTQUOTE = ", 0) == 0) {
                told.back() += line.substr(14);
            }
        }
        return told;
    }

    static std::string ofServer(const std::string& what) { return "The server does not offer " + what; }
};

const std::string kSha(64, 'a');

} // namespace

TEST_F(SessionFacts, ATimeIsReadAsTheServersReplyTellsIt)
{
    EXPECT_EQ(Lines{"[MDTM a.bak]"}, commandsOf("ReadModified"));
    EXPECT_EQ("1767323045", lastGot());
    request.remotePath = "sftp://server/backup/a.bak";
    commandsOf("ReadModified");
    EXPECT_EQ("1000", lastGot());
    scripted::curl().time = -1;
    commandsOf("ReadModified", CURLE_REMOTE_FILE_NOT_FOUND);
    EXPECT_EQ("0", lastGot());
}

TEST_F(SessionFacts, ATimeThatCannotBeReadHasACode)
{
    refused["MDTM"] = CURLE_QUOTE_ERROR;
    commandsOf("ReadModified", CURLE_REMOTE_FILE_NOT_FOUND);
    EXPECT_EQ(scripted::text(78) + ": QUOT string not accepted: MDTM a.bak (the server's last reply: 550 not that)",
              errorText);
    for (const char* const reply : {"500 what?", "502 not here"}) {
        refusal = reply;
        commandsOf("ReadModified", CURLE_NOT_BUILT_IN);
        EXPECT_EQ(ofServer("MDTM"), errorText);
    }
    refused["MDTM"] = CURLE_OK;
    for (const char* const reply : {"213 yesterday", "213 2026010203040", "250 20260102030405"}) {
        refusal = reply;
        commandsOf("ReadModified", CURLE_WEIRD_SERVER_REPLY);
        EXPECT_EQ(scripted::text(8) + ": the reply to MDTM holds no time", errorText);
    }
    performGives(CURLE_COULDNT_CONNECT);
    commandsOf("ReadModified", CURLE_COULDNT_CONNECT);
}

TEST_F(SessionFacts, ATimeIsSetOnlyWhereTheServerOffersIt)
{
    for (const Lines& none : {Lines{}, Lines{"XMFMT"}, Lines{"MDTM"}}) {
        features = none;
        EXPECT_EQ(Lines{"[FEAT]"}, commandsOf("SetModified", CURLE_NOT_BUILT_IN));
        EXPECT_EQ(ofServer("MFMT"), errorText);
    }
    features = {"mfmt"};
    EXPECT_EQ((Lines{"[FEAT]", "[MFMT 20260102030405 a.bak]"}), commandsOf("SetModified"));
    refused["MFMT"] = CURLE_QUOTE_ERROR;
    commandsOf("SetModified", CURLE_QUOTE_ERROR);
}

TEST_F(SessionFacts, ATimeBeforeTheEpochIsCutOffDownwards)
{
    features = {"MFMT"};
    using namespace std::chrono_literals;
    const Lines lines = journalOfCall([](SFtpSession& session, const SFtpRequest& asked, std::string& text) {
        return session.SetModified(asked, std::chrono::system_clock::from_time_t(0) - 1ms, text);
    });
    EXPECT_TRUE(hasLine("1 PREQUOTE = [*MFMT 19691231235959 a.bak]", lines));
}

TEST_F(SessionFacts, ATimeMayNeedMoreThan32Bits)
{
    features = {"MFMT"};
    const auto set = [this](std::int64_t seconds, int expected) {
        const auto call = [seconds](SFtpSession& session, const SFtpRequest& asked, std::string& text) {
            return session.SetModified(asked, std::chrono::system_clock::time_point(std::chrono::seconds(seconds)),
                                       text);
        };
        return journalOfCall(call, expected);
    };
    EXPECT_TRUE(hasLine("1 PREQUOTE = [*MFMT 20400229235959 a.bak]", set(2214172799, CURLE_OK)));
    EXPECT_TRUE(hasLine("1 PREQUOTE = [*MFMT 19000101000000 a.bak]", set(-2208988800, CURLE_OK)));
    set(-2208988801, CURLE_BAD_FUNCTION_ARGUMENT);
    EXPECT_EQ(scripted::text(CURLE_BAD_FUNCTION_ARGUMENT) + ": the time is not within the years 1900 to 9999",
              errorText);
}

TEST_F(SessionFacts, ATimeThatSshDoesNotKnowIsRefused)
{
    request.remotePath = "sftp://server/backup/a.bak";
    for (const std::int64_t seconds : {-1LL, 0LL, 4294967295LL, 4294967296LL}) {
        const bool isKnown = seconds >= 0 && seconds <= 4294967295;
        const auto call = [seconds](SFtpSession& session, const SFtpRequest& asked, std::string& text) {
            return session.SetModified(asked, std::chrono::system_clock::time_point(std::chrono::seconds(seconds)),
                                       text);
        };
        errorText.clear();
        journalOfCall(call, isKnown ? CURLE_OK : CURLE_BAD_FUNCTION_ARGUMENT);
        EXPECT_EQ(isKnown ? ""
                          : scripted::text(CURLE_BAD_FUNCTION_ARGUMENT) +
                                ": SSH knows no time before 1970 or after 2106-02-07T06:28:15Z",
                  errorText);
    }
}

TEST_F(SessionFacts, AChecksumComesByTheBestThatTheServerOffers)
{
    struct Row
    {
        Lines offered;
        std::string commands;
        std::string reply;
        std::string got;
    };
    const std::string crc = "CRC-32 00012345";
    for (const Row& row : {
             Row{{"HASH MD5;SHA-256*", "XCRC"}, "[HASH a.bak]", "213 SHA-256 0-7 " + kSha + " a", "SHA-256 " + kSha},
             Row{{"HASH MD5*;SHA-256", "XSHA256"},
                 "[OPTS HASH SHA-256][HASH a.bak]",
                 "213 SHA-256 0-7 " + kSha + " a",
                 "SHA-256 " + kSha},
             Row{{"HASH MD5*", "XSHA256"}, "[XSHA256 a.bak]", "250 " + kSha, "SHA-256 " + kSha},
             Row{{"XCRC", "XSHA256 file;start;end"}, "[XSHA256 a.bak]", "250 " + kSha, "SHA-256 " + kSha},
             Row{{"HASH SHA-1*;SHA-2567", "XCRC file"}, "[XCRC a.bak]", "250 12345", crc},
             Row{{"XCRC"}, "[XCRC a.bak]", "250 0001234A", "CRC-32 0001234a"},
         }) {
        SCOPED_TRACE(row.commands);
        features = row.offered;
        toldChecksum = row.reply;
        EXPECT_EQ((Lines{"[FEAT]", row.commands}), commandsOf("ReadChecksum"));
        EXPECT_EQ(row.got, lastGot());
    }
}

TEST_F(SessionFacts, AChecksumThatCannotBeHadHasACode)
{
    for (const Lines& none : {Lines{}, Lines{"HASH MD5*"}, Lines{"XMD5"}}) {
        features = none;
        EXPECT_EQ(Lines{"[FEAT]"}, commandsOf("ReadChecksum", CURLE_NOT_BUILT_IN));
        EXPECT_EQ(ofServer("HASH with SHA-256, XSHA256 or XCRC"), errorText);
    }
    request.remotePath = "sftp://server/backup/a.bak";
    EXPECT_EQ(Lines{}, commandsOf("ReadChecksum", CURLE_NOT_BUILT_IN));
    request.remotePath = "ftp://server/backup/a.bak";
    features = {"XCRC"};
    for (const char* const reply : {"250 123456789", "250 x", "250", "250 done"}) {
        toldChecksum = reply;
        commandsOf("ReadChecksum", CURLE_WEIRD_SERVER_REPLY);
        EXPECT_EQ(scripted::text(8) + ": the reply holds no checksum", errorText);
    }
    features = {"HASH SHA-256*"};
    for (const std::string& reply : {"213 MD5 0-7 " + kSha + " a", "213 SHA-256 0-7 " + kSha.substr(1) + " a",
                                     "213 SHA-256 " + kSha, std::string("213 SHA-256")}) {
        toldChecksum = reply;
        commandsOf("ReadChecksum", CURLE_WEIRD_SERVER_REPLY);
    }
}

TEST_F(SessionFacts, ADirectoryHasNone)
{
    request.remotePath = "ftp://server/backup/";
    for (const char* const function : {"ReadModified", "SetModified", "ReadChecksum"}) {
        EXPECT_EQ(Lines{}, commandsOf(function, CURLE_URL_MALFORMAT));
    }
}
