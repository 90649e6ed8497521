// Servers that mean harm: names that lead elsewhere, listings without end, ports of somebody else.
#include "SessionLive.h"

#include "support/CurlRelease.h"

#include <boost/asio.hpp>

#include <array>
#include <atomic>
#include <sstream>
#include <thread>

#include <unistd.h>

namespace {

namespace asio = boost::asio;

/// A server in the clear, for one visit, whose listings are what it is given. It takes uploads with a strange reply,
/// and loses all but a byte.
class Lister
{
public:
    explicit Lister(std::string listing)
        : m_listing(std::move(listing)), m_control(m_context, {asio::ip::address_v4::loopback(), 0}),
          m_data(m_context, {asio::ip::address_v4::loopback(), 0}), m_thread([this] { serve(); })
    {
    }
    ~Lister() { m_thread.join(); }
    Lister(const Lister&) = delete;
    Lister& operator=(const Lister&) = delete;

    unsigned port() const { return m_control.local_endpoint().port(); }

private:
    static void say(asio::ip::tcp::socket& socket, const std::string& bytes)
    {
        boost::system::error_code leftAlready;
        asio::write(socket, asio::buffer(bytes), leftAlready);
    }

    std::string replyTo(const std::string& command) const
    {
        const std::string verb = command.substr(0, command.find_first_of(" \r"));
        return verb == "USER"   ? "331 go on"
               : verb == "PASS" ? "230 in"
               : verb == "PWD"  ? "257 \"/\""
               : verb == "FEAT" ? "211-features\r\n MLST type*;\r\n211 end"
               : verb == "EPSV" ? "229 here (|||" + std::to_string(m_data.local_endpoint().port()) + "|)"
               : verb == "TYPE" ? "200 set"
               : verb == "MLSD" ? "150 data"
               : verb == "STOR" ? "200 send"
               : verb == "SIZE" ? "213 1"
               : verb == "RNFR" ? "350 go on"
               : verb == "RNTO" ? "250 done"
                                : "502 no";
    }

    void serve()
    {
        asio::ip::tcp::socket control = m_control.accept();
        say(control, "220 ready\r\n");
        std::string heard;
        boost::system::error_code left;
        while (const std::size_t size = asio::read_until(control, asio::dynamic_buffer(heard), '\n', left)) {
            const std::string command = heard.substr(0, size);
            heard.erase(0, size);
            say(control, replyTo(command) + "\r\n");
            if (command.compare(0, 4, "MLSD") == 0) {
                asio::ip::tcp::socket data = m_data.accept();
                say(data, m_listing);
                data.close();
                say(control, "226 done\r\n");
            } else if (command.compare(0, 4, "STOR") == 0) {
                asio::ip::tcp::socket data = m_data.accept();
                std::string received;
                asio::read(data, asio::dynamic_buffer(received), left);
                say(control, "226 done\r\n");
            }
        }
    }

    const std::string m_listing;
    asio::io_context m_context;
    asio::ip::tcp::acceptor m_control;
    asio::ip::tcp::acceptor m_data;
    std::thread m_thread;
};

/// Refuses each TLS handshake as a server does that knows none of the versions.
class Refuser
{
public:
    Refuser() : m_acceptor(m_context, {asio::ip::address_v4::loopback(), 0})
    {
        await();
        m_thread = std::thread([this] { m_context.run(); });
    }
    ~Refuser()
    {
        m_context.stop();
        m_thread.join();
    }
    Refuser(const Refuser&) = delete;
    Refuser& operator=(const Refuser&) = delete;

    unsigned port() const { return m_acceptor.local_endpoint().port(); }
    unsigned refused() const { return m_refused; }

private:
    void await()
    {
        m_acceptor.async_accept([this](boost::system::error_code failed, asio::ip::tcp::socket socket) {
            if (!failed) {
                refuse(socket);
                await();
            }
        });
    }

    void refuse(asio::ip::tcp::socket& socket)
    {
        std::array<char, 4096> hello = {};
        boost::system::error_code leftAlready;
        socket.read_some(asio::buffer(hello), leftAlready);
        ++m_refused;
        // The alert protocol_version, fatal.
        asio::write(socket, asio::buffer("\x15\x03\x03\x00\x02\x02\x46", 7), leftAlready);
    }

    asio::io_context m_context;
    asio::ip::tcp::acceptor m_acceptor;
    std::atomic<unsigned> m_refused{0};
    std::thread m_thread;
};

class SessionHostile : public SessionLive
{
protected:
    int listWhatComes(std::string listing)
    {
        const Lister lister(std::move(listing));
        SessionOptions options;
        options.requireTls = false;
        SFtpSession session(options);
        request.port = lister.port();
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

// libcurl goes on after any reply below 400.
TEST_F(SessionHostile, ASizeIsComparedWhateverComesBeforeTheData)
{
    const Lister lister("");
    SessionOptions options;
    options.requireTls = options.atomicUpload = false;
    SFtpSession session(options);
    request.port = lister.port();
    request.remotePath = "ftp://localhost/a.bak";
    std::istringstream in("content");
    EXPECT_EQ(CURLE_PARTIAL_FILE, session.UploadFrom(request, in, errorText)) << errorText;
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
    EXPECT_EQ(CURLE_FILESIZE_EXCEEDED, listWhatComes(std::move(data)));
    EXPECT_NE(std::string::npos, errorText.find("the listing is larger than 128 MiB")) << errorText;
    EXPECT_EQ(1U, entries.size());
}

// The shortest lines make the most entries.
TEST_F(SessionHostile, AListingHasAnEndInMemoryToo)
{
    std::string data;
    for (int i = 0; i < 3 * 1024 * 1024; ++i) {
        data += " x\n";
    }
    EXPECT_EQ(CURLE_FILESIZE_EXCEEDED, listWhatComes(std::move(data)));
    EXPECT_NE(std::string::npos, errorText.find("the listing is larger than 128 MiB")) << errorText;
    EXPECT_TRUE(entries.empty());
}

TEST_F(SessionHostile, ALineHasAnEnd)
{
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, listWhatComes("type=file; " + std::string(2 * 1024 * 1024, 'a')));
    EXPECT_NE(std::string::npos, errorText.find("does not end")) << errorText;
}

// A server could have its clients look for open ports on other machines.
TEST_F(SessionHostile, DataComesFromTheServerAlone)
{
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

// Otherwise somebody on the way could, once, keep a session from every server without TLS 1.3.
TEST_F(SessionHostile, ARefusalOfTls12IsBelievedOnlyWhereTls13Works)
{
    const Refuser refuser;
    request.port = refuser.port();
    request.remotePath = "ftps://localhost/";
    SFtpSession session;
    for (const unsigned connections : {2U, 4U}) {
        EXPECT_EQ(CURLE_SSL_CONNECT_ERROR, session.TestSConnect(request, errorText)) << errorText;
        EXPECT_EQ(connections, refuser.refused());
    }
}

// libcurl takes any reply below 400 for success.
TEST_F(SessionHostile, AReplyThatConfirmsNothingIsNoSuccess)
{
    misbehave("1/DELE=reply:150 wait");
    misbehave("2/RNFR=reply:350 go on");
    misbehave("2/RNTO=reply:350 go on");
    misbehave("3/MKD=reply:350 go on");
    serve();
    aimAt("/");
    request.remoteFileName = "a";
    request.localPath = "b";
    SFtpSession session;
    const std::string text =
        "Weird server reply: the server's last reply neither confirms nor refuses the command (the "
        "server's last reply: ";
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.DelSFtpFile(request, errorText));
    EXPECT_EQ(text + "150 wait)", errorText);
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.ReNameSFtpFile(request, errorText));
    EXPECT_EQ(text + "350 go on)", errorText);
    aimAt("/d");
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.MakeSFtpDir(request, errorText));
    aimAt("/");
    EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
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

// Somebody on the way can end a connection, but only the server can send a close_notify.
TEST_F(SessionHostile, AFileOfUnknownSizeIsCompleteOnlyIfItsEndIsAnnounced)
{
    writeFile(served("a.bak"), "0123456789");
    misbehave("SIZE=reply:500 unknown");
    misbehave("1/DATA=drop-after:5");
    misbehave("2/DATA#2=no-close-notify");
    misbehave("DONE=reply:226 done");
    serve();
    aimAt("/a.bak");
    {
        SFtpSession session;
        for (const char* const how : {"cut off", "announced", "not announced", "announced"}) {
            SCOPED_TRACE(how);
            const bool announced = std::string("announced") == how;
            EXPECT_EQ(announced ? CURLE_OK : CURLE_RECV_ERROR, session.DownLoadSFtpFile(request, errorText))
                << errorText;
            EXPECT_EQ(announced ? "0123456789" : kNoFile, contentOf(request.localPath));
            unlink(request.localPath.c_str());
        }
    }
    EXPECT_EQ(3U, sessions().size()) << "after a failure, the TLS session is no longer valid";
}

// Cut off behind the first of two lines.
TEST_F(SessionHostile, AListingMayHaveToAnnounceItsEnd)
{
    writeFile(served("a.bak"), "1");
    writeFile(served("b.bak"), "2");
    for (const bool required : {false, true}) {
        SCOPED_TRACE(required);
        config.faults.clear();
        misbehave("FEAT=reply:500 unknown");
        misbehave("DATA=drop-after:7");
        misbehave("DONE=reply:226 done");
        serve();
        aimAt("/");
        SessionOptions options;
        options.requireListingEnd = required;
        SFtpSession session(options);
        const int expected = required || isCurl814() ? CURLE_RECV_ERROR : CURLE_OK;
        EXPECT_EQ(expected, session.Listsftpdir(request, errorText)) << errorText;
        EXPECT_EQ(expected, session.ListEntries(request, entries, errorText)) << errorText;
        stopServing();
    }
    // The later libcurl finds it out by itself.
    EXPECT_TRUE(holds(isCurl814() ? "unexpected eof while reading, errno 0 (the server's last reply: 150 data follows)"
                                  : "Failure when receiving data from the peer: the server has neither reported a size "
                                    "nor announced the end of the data with close_notify (the server's last reply: "
                                    "226 done)",
                      errorText));
}

// On no connection, or not on that for the data.
TEST_F(SessionHostile, WithoutTlsNoEndIsAnnounced)
{
    writeFile(served("a.bak"), "0123456789");
    config.tlsRequiredAtLogin = config.tlsReuseRequired = false;
    misbehave("SIZE=reply:500 unknown");
    misbehave("PROT=reply:536 no");
    SessionOptions options;
    options.requireTls = false;
    for (const testserver::TlsMode mode : {testserver::TlsMode::Plain, testserver::TlsMode::Explicit}) {
        config.tls = mode;
        serve();
        aimAt("/a.bak");
        EXPECT_EQ(CURLE_OK, SFtpSession(options).DownLoadSFtpFile(request, errorText)) << errorText;
        EXPECT_EQ("0123456789", contentOf(request.localPath));
        EXPECT_TRUE(hasLine("= no TLS on data", sessions().at(0)));
        unlink(request.localPath.c_str());
    }
}
