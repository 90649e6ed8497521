#include <output/Hint.h>

#include <gtest/gtest.h>

namespace {

std::string hint(CURLcode result, int code, const std::string& command = "")
{
    Reply reply;
    reply.code = code;
    reply.command = command;
    return hintFor(result, reply);
}

} // namespace

TEST(Hint, IsForFailures)
{
    EXPECT_EQ(hint(CURLE_OK, 421), "");
    EXPECT_EQ(hint(CURLE_UNSUPPORTED_PROTOCOL, 0), "");
    EXPECT_EQ(hint(CURLE_COULDNT_CONNECT, 0), "no server answers there; check host, port and firewalls");
}

TEST(Hint, FollowsFromTheReply)
{
    EXPECT_EQ(hint(CURLE_OPERATION_TIMEDOUT, 421),
              "the server ends the connection, or takes no more of them; try again later, or give --retry");
    EXPECT_EQ(hint(CURLE_OPERATION_TIMEDOUT, 150),
              "the server did not answer in time; check the network, allow more time, or give --retry");
    for (const CURLcode result : {CURLE_UPLOAD_FAILED, CURLE_REMOTE_DISK_FULL, CURLE_PARTIAL_FILE}) {
        for (const int code : {452, 552}) {
            EXPECT_EQ(hint(result, code, "STOR"),
                      "the server has no space left for this user; free some there, or have the quota raised");
        }
    }
    for (const int code : {550, 553}) {
        EXPECT_EQ(hint(CURLE_UPLOAD_FAILED, code),
                  "the server refuses to write this file; check its name and the directory's rights there");
    }
    EXPECT_EQ(hint(CURLE_UPLOAD_FAILED, 532), "the server refused the file; its last reply says why");
    EXPECT_EQ(hint(CURLE_FTP_COULDNT_RETR_FILE, 550),
              "the server refuses to send the file or the listing; its last reply says why");
    EXPECT_EQ(hint(CURLE_PARTIAL_FILE, 426), "the server aborted the transfer; try again, or look at its log");
    EXPECT_EQ(hint(CURLE_PARTIAL_FILE, 226), "the transfer ended early; the server's log, or --trace, says why");
    EXPECT_EQ(hint(CURLE_QUOTE_ERROR, 500).find("the server does not know the command; "), 0U);
    EXPECT_EQ(hint(CURLE_QUOTE_ERROR, 502).find("the server does not carry the command out; "), 0U);
    EXPECT_EQ(hint(CURLE_QUOTE_ERROR, 550),
              "the server refused the command: look with ls whether the file is there, and at the directory's rights");
}

TEST(Hint, TellsARefusedTransferFromAClosedPort)
{
    const std::string refused =
        "the server's last reply refuses the transfer itself: look there for the reason, not at "
        "ports or firewalls";
    for (const std::string command : {"STOR", "APPE", "RETR", "NLST", "LIST"}) {
        EXPECT_EQ(hint(CURLE_FTP_WEIRD_PASV_REPLY, 550, command), refused);
        EXPECT_EQ(hint(CURLE_FTP_WEIRD_PASV_REPLY, 400, command), refused);
        EXPECT_EQ(hint(CURLE_FTP_WEIRD_PASV_REPLY, 150, command),
                  "TLS on the data connection failed; --trace shows how, the certificate there among it");
        EXPECT_EQ(hint(CURLE_FTP_WEIRD_PASV_REPLY, 552, command),
                  "the server has no space left for this user; free some there, or have the quota raised");
    }
    for (const std::string command : {"EPSV", "PASV"}) {
        EXPECT_EQ(hint(CURLE_FTP_WEIRD_PASV_REPLY, 550, command),
                  "the data connection failed; check that the server's passive ports are open");
    }
}
