#include "support/LoopbackPort.h"

#include "support/Codes.h"

#include <output/Hint.h>

#include <gtest/gtest.h>

namespace {

std::string hint(CURLcode result, int code, const std::string& command = "")
{
    Reply reply;
    reply.code = code;
    reply.command = command;
    return hintFor(Way::AsHost, result, reply);
}

} // namespace

TEST(Hint, IsForFailures)
{
    EXPECT_EQ("", hint(CURLE_OK, 421));
    EXPECT_EQ("", hint(CURLE_UNSUPPORTED_PROTOCOL, 0));
    EXPECT_EQ("no server answers there; check host, port and firewalls", hint(CURLE_COULDNT_CONNECT, 0));
}

TEST(Hint, IsForTheWayThatWasTaken)
{
    Reply unknown;
    unknown.code = 500;
    EXPECT_EQ("the server does not know the command; mv and rm need one that knows \"rename OLD NEW\" and \"rm PATH\", "
              "or an sftp: URL, or no --as-host",
              hintFor(Way::AsHost, CURLE_QUOTE_ERROR, unknown));
    EXPECT_EQ("the server refused the command: look with ls at what is there, and at the directory's rights",
              hintFor(Way::Session, CURLE_QUOTE_ERROR, unknown));
    EXPECT_EQ("check user and password", hintFor(Way::Session, CURLE_LOGIN_DENIED, Reply()));
    EXPECT_EQ(0U, hintFor(Way::AsHost, CURLE_LOGIN_DENIED, Reply()).find("check user and password; a server"));
    EXPECT_EQ("", hintFor(Way::SshSession, CURLE_PEER_FAILED_VERIFICATION, Reply())) << "the text says it all";
}

TEST(Hint, FollowsFromTheReply)
{
    EXPECT_EQ("the server ends the connection, or takes no more of them; try again later, or give --retry",
              hint(CURLE_OPERATION_TIMEDOUT, 421));
    EXPECT_EQ("the server did not answer in time; check the network, allow more time, or give --retry",
              hint(CURLE_OPERATION_TIMEDOUT, 150));
    for (const CURLcode result : {CURLE_UPLOAD_FAILED, CURLE_REMOTE_DISK_FULL, CURLE_PARTIAL_FILE}) {
        SCOPED_TRACE(nameOf(result));
        for (const int code : {452, 552}) {
            SCOPED_TRACE(code);
            EXPECT_EQ("the server has no space left for this user; free some there, or have the quota raised",
                      hint(result, code, "STOR"));
        }
    }
    for (const int code : {550, 553}) {
        SCOPED_TRACE(code);
        EXPECT_EQ("the server refuses to write this file; check its name and the directory's rights there",
                  hint(CURLE_UPLOAD_FAILED, code));
    }
    EXPECT_EQ("the server refused the file; its last reply says why", hint(CURLE_UPLOAD_FAILED, 532));
    EXPECT_EQ("the server refuses to send the file or the listing; its last reply says why",
              hint(CURLE_FTP_COULDNT_RETR_FILE, 550));
    EXPECT_EQ("the server aborted the transfer; try again, or look at its log", hint(CURLE_PARTIAL_FILE, 426));
    EXPECT_EQ("the transfer ended early; the server's log, or --trace, says why", hint(CURLE_PARTIAL_FILE, 226));
    EXPECT_EQ(0U, hint(CURLE_QUOTE_ERROR, 500).find("the server does not know the command; "));
    EXPECT_EQ(0U, hint(CURLE_QUOTE_ERROR, 502).find("the server does not carry the command out; "));
    EXPECT_EQ("the server refused the command: look with ls at what is there, and at the directory's rights",
              hint(CURLE_QUOTE_ERROR, 550));
}

TEST(Hint, DistinguishesARefusedTransferFromAClosedPort)
{
    const std::string refused =
        "the server's last reply refuses the transfer itself: look there for the reason, not at "
        "ports or firewalls";
    for (const std::string command : {"STOR", "APPE", "RETR", "NLST", "LIST"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ(refused, hint(CURLE_FTP_WEIRD_PASV_REPLY, 550, command));
        EXPECT_EQ(refused, hint(CURLE_FTP_WEIRD_PASV_REPLY, 400, command));
        EXPECT_EQ("TLS on the data connection failed; --trace shows how, the certificate there among it",
                  hint(CURLE_FTP_WEIRD_PASV_REPLY, 150, command));
        EXPECT_EQ("the server has no space left for this user; free some there, or have the quota raised",
                  hint(CURLE_FTP_WEIRD_PASV_REPLY, 552, command));
    }
    for (const std::string command : {"EPSV", "PASV"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ("the data connection failed; check that the server's passive ports are open",
                  hint(CURLE_FTP_WEIRD_PASV_REPLY, 550, command));
    }
}
