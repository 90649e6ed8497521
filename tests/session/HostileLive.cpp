// Servers that mean harm: names that lead elsewhere, listings without end, ports of somebody else.
#include "SessionLive.h"

#include "harness/Playback.h"

#include <boost/asio.hpp>

#include <sstream>

namespace {

class SessionHostile : public SessionLive
{
protected:
    // A server that says what it is given: a listing by MLSD, in the clear.
    int listWhatComes(const std::string& data)
    {
        Playback playback;
        playback.load(
            "220 ready\r\n~502 no\r\n~502 no\r\n~331 go on\r\n~230 in\r\n~257 \"/\"\r\n"
            "~211-features\r\n MLST type*;\r\n211 end\r\n~229 here (|||@|)\r\n~200 set\r\n~150 data\r\n226 done\r\n"
            "~221 bye\r\n^" +
            data);
        SessionOptions options;
        options.requireTls = false;
        SFtpSession session(options);
        request.port = playback.controlPort();
        request.remotePath = "ftp://localhost/";
        return session.ListEntries(request, entries, errorText);
    }

    Lines names() const
    {
        Lines all;
        for (const RemoteEntry& each : entries) {
            all.push_back(each.name);
        }
        return all;
    }
};

} // namespace

TEST_F(SessionHostile, NamesLeadNowhereElse)
{
    using namespace std::string_literals;
    EXPECT_EQ(0, listWhatComes("type=file;size=1; ../../etc/passwd\r\ntype=dir; ..\r\ntype=file; /etc/passwd\r\n"
                               "type=file; a\0b\r\ntype=file; \x1b[2J\r\ntype=file; \x7f\r\nno facts\r\n"
                               "type=file;size=-7;modify=20269999999999; odd\r\n;;;=;=; signs\r\nsize=1e9; float\r\n"s))
        << errorText;
    EXPECT_EQ((Lines{"\x1b[2J", "\x7f", "odd", "signs", "float"}), names());
    for (const RemoteEntry& each : entries) {
        EXPECT_EQ(-1, each.size) << each.name;
        EXPECT_FALSE(each.modified) << each.name;
    }
}

TEST_F(SessionHostile, AListingHasAnEnd)
{
    entries.resize(1);
    // No entries, so that they take no memory here.
    const std::string block(1023, '.');
    std::string data;
    for (int i = 0; i < 129 * 1024; ++i) {
        data += block;
        data += '\n';
    }
    EXPECT_EQ(CURLE_FILESIZE_EXCEEDED, listWhatComes(data));
    EXPECT_NE(std::string::npos, errorText.find("the listing is larger than 128 MiB")) << errorText;
    EXPECT_EQ(1U, entries.size());
}

TEST_F(SessionHostile, ALineHasAnEnd)
{
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, listWhatComes("type=file; " + std::string(2 * 1024 * 1024, 'a')));
    EXPECT_NE(std::string::npos, errorText.find("does not end")) << errorText;
}

// A server could have its clients look for open ports on other machines.
TEST_F(SessionHostile, DataComesFromTheServerAlone)
{
    namespace asio = boost::asio;
    asio::io_context context;
    asio::ip::tcp::acceptor elsewhere(context, {asio::ip::make_address_v4("127.0.0.2"), 0});
    elsewhere.non_blocking(true);
    const unsigned port = elsewhere.local_endpoint().port();
    const std::string inOctets = std::to_string(port / 256) + "," + std::to_string(port % 256);
    for (const std::string& epsv :
         {std::string("500 unknown"), "229 here (|1|127.0.0.2|" + std::to_string(port) + "|)"}) {
        SCOPED_TRACE(epsv);
        config.faults.clear();
        misbehave("EPSV=reply:" + epsv);
        misbehave("PASV=reply:227 here (127,0,0,2," + inOctets + ")");
        serve();
        aimAt("/");
        SFtpSession session;
        EXPECT_NE(0, session.ListEntries(request, entries, errorText));
        stopServing();
    }
    boost::system::error_code nobody;
    elsewhere.accept(nobody);
    EXPECT_EQ(asio::error::would_block, nobody);
}

TEST_F(SessionHostile, AReplyIsShownWithoutItsControlBytes)
{
    misbehave("DELE=reply:550 \\x1b[2Jgone \\x07 correct horse battery");
    serve();
    aimAt("/");
    request.remoteFileName = "a";
    SFtpSession session;
    EXPECT_EQ(CURLE_QUOTE_ERROR, session.DelSFtpFile(request, errorText));
    EXPECT_EQ("Quote command returned error: QUOT string not accepted: DELE a (the server's last reply: 550 "
              "\\x1B[2Jgone \\x07 ****)",
              errorText);
}
