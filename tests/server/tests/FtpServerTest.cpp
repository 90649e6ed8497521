// The server as libcurl sees it.
#include "FtpServer.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <openssl/tls1.h>

#include <fstream>
#include <sstream>
#include <thread>

namespace {

using namespace testserver;
namespace fs = std::filesystem;

size_t append(char* bytes, size_t size, size_t count, void* text)
{
    static_cast<std::string*>(text)->append(bytes, size * count);
    return size * count;
}

size_t take(char* bytes, size_t size, size_t count, void* text)
{
    auto& rest = *static_cast<std::string*>(text);
    const size_t taken = rest.copy(bytes, size * count);
    rest.erase(0, taken);
    return taken;
}

struct Cleanup
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

class FtpServerTest : public testing::Test
{
protected:
    FtpServerTest()
    {
        std::string pattern = testing::TempDir() + "server-XXXXXX";
        folder = mkdtemp(pattern.data());
        config.root = folder;
        config.password = "secret";
        config.certificate = authority.issue();
        write("file", "content");
    }
    ~FtpServerTest() override
    {
        server.reset();
        fs::remove_all(folder);
    }

    void write(const std::string& name, const std::string& content) const
    {
        std::ofstream(folder / name, std::ios::binary) << content;
    }

    std::string read(const std::string& name) const
    {
        std::ifstream file(folder / name, std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        return content.str();
    }

    // A handle for a path, trusting the CA, with TLS required unless the server has none.
    std::unique_ptr<CURL, Cleanup> handle(const std::string& path, std::string& received) const
    {
        std::unique_ptr<CURL, Cleanup> made(curl_easy_init());
        const std::string scheme = config.tls == TlsMode::Implicit ? "ftps" : "ftp";
        const std::string url = scheme + "://localhost:" + std::to_string(server->port()) + path;
        const std::string ca = authority.certificatePem();
        curl_blob blob = {const_cast<char*>(ca.data()), ca.size(), CURL_BLOB_COPY};
        curl_easy_setopt(made.get(), CURLOPT_URL, url.c_str());
        curl_easy_setopt(made.get(), CURLOPT_USERPWD, "backup:secret");
        curl_easy_setopt(made.get(), CURLOPT_CAINFO_BLOB, &blob);
        curl_easy_setopt(made.get(), CURLOPT_USE_SSL,
                         static_cast<long>(config.tls == TlsMode::Plain ? CURLUSESSL_NONE : CURLUSESSL_ALL));
        curl_easy_setopt(made.get(), CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(made.get(), CURLOPT_FTP_RESPONSE_TIMEOUT, 60L);
        curl_easy_setopt(made.get(), CURLOPT_WRITEFUNCTION, append);
        curl_easy_setopt(made.get(), CURLOPT_WRITEDATA, &received);
        return made;
    }

    CURLcode get(const std::string& path, std::string& received) const
    {
        return curl_easy_perform(handle(path, received).get());
    }

    CURLcode put(const std::string& path, std::string content) const
    {
        std::string received;
        const auto made = handle(path, received);
        curl_easy_setopt(made.get(), CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(made.get(), CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR_RETRY));
        curl_easy_setopt(made.get(), CURLOPT_READFUNCTION, take);
        curl_easy_setopt(made.get(), CURLOPT_READDATA, &content);
        return curl_easy_perform(made.get());
    }

    CURLcode say(const std::string& command) const
    {
        std::string received;
        const auto made = handle("/", received);
        const std::unique_ptr<curl_slist, Cleanup> commands(curl_slist_append(nullptr, command.c_str()));
        curl_easy_setopt(made.get(), CURLOPT_POSTQUOTE, commands.get());
        curl_easy_setopt(made.get(), CURLOPT_NOBODY, 1L);
        return curl_easy_perform(made.get());
    }

    void serve() { server = std::make_unique<FtpServer>(config); }

    fs::path folder;
    CertificateAuthority authority;
    ServerConfig config;
    std::unique_ptr<FtpServer> server;
};

TEST_F(FtpServerTest, MovesFilesInEveryTlsMode)
{
    for (const TlsMode mode : {TlsMode::Plain, TlsMode::Explicit, TlsMode::Implicit}) {
        config.tls = mode;
        serve();
        std::string received;
        EXPECT_EQ(CURLE_OK, get("/file", received));
        EXPECT_EQ("content", received);
        EXPECT_EQ(CURLE_OK, put("/new/deep/file", "something else"));
        EXPECT_EQ("something else", read("new/deep/file"));
        fs::remove_all(folder / "new");
    }
}

TEST_F(FtpServerTest, LargeFilesArriveWhole)
{
    std::string content(5000001, 'x');
    for (std::size_t i = 0; i < content.size(); i += 7) {
        content[i] = static_cast<char>(i);
    }
    serve();
    EXPECT_EQ(CURLE_OK, put("/large", content));
    std::string received;
    EXPECT_EQ(CURLE_OK, get("/large", received));
    EXPECT_TRUE(content == received);
}

TEST_F(FtpServerTest, RenamesAndRemoves)
{
    serve();
    EXPECT_EQ(CURLE_OK, say("rename /file /other"));
    EXPECT_EQ("content", read("other"));
    EXPECT_EQ(CURLE_QUOTE_ERROR, say("rename /file /other"));
    EXPECT_EQ(CURLE_QUOTE_ERROR, say("rename /other /two words"));
    EXPECT_EQ(CURLE_OK, say("rm /other"));
    EXPECT_EQ(CURLE_QUOTE_ERROR, say("rm /other"));
    EXPECT_EQ(CURLE_QUOTE_ERROR, say("frobnicate"));
}

TEST_F(FtpServerTest, RefusesStrangers)
{
    config.password = "another";
    serve();
    std::string received;
    EXPECT_EQ(CURLE_LOGIN_DENIED, get("/file", received));
}

TEST_F(FtpServerTest, StallsUntilTheClientLeavesOrTheServerStops)
{
    config.faults = {parseFault("RETR=stall")};
    serve();
    std::string received;
    const auto made = handle("/file", received);
    std::thread client([&] { EXPECT_NE(CURLE_OK, curl_easy_perform(made.get())); });
    server->stop();
    client.join();
}

TEST_F(FtpServerTest, DataFaultsShowAsTheyAreMeantTo)
{
    struct Case
    {
        const char* fault;
        CURLcode expected;
        const char* received;
    };
    const Case cases[] = {
        {"DATA=claim-after:3", CURLE_PARTIAL_FILE, "con"},
        {"DATA=drop-after:3", CURLE_PARTIAL_FILE, "con"},
        {"DATA=no-close-notify", CURLE_OK, "content"},
        {"DATA=slow:1000", CURLE_OK, "content"},
        {"SIZE=reply:213 3", CURLE_OK, "con"},
        {"RETR=reply:550 no", CURLE_REMOTE_FILE_NOT_FOUND, ""},
        {"RETR=drop", CURLE_RECV_ERROR, ""},
        {"USER=split", CURLE_OK, "content"},
        {"USER=pad:3000", CURLE_OK, "content"},
        {"USER=delay:10", CURLE_OK, "content"},
        {"TLS=close", CURLE_SSL_CONNECT_ERROR, ""},
        {"LISTEN=refuse", CURLE_COULDNT_CONNECT, ""},
    };
    for (const Case& one : cases) {
        config.faults = {parseFault(one.fault)};
        serve();
        std::string received;
        EXPECT_EQ(one.expected, get("/file", received)) << one.fault;
        EXPECT_EQ(one.received, received) << one.fault;
    }
}

TEST_F(FtpServerTest, GarbageIsNoHandshake)
{
    config.faults = {parseFault("TLS=garbage")};
    serve();
    std::string received;
    // The code depends on whether libcurl reads the garbage together with the 234 before it.
    const CURLcode code = get("/file", received);
    EXPECT_TRUE(code == CURLE_SSL_CONNECT_ERROR || code == CURLE_WEIRD_SERVER_REPLY) << code;
}

TEST_F(FtpServerTest, AStrictServerAcceptsAnAnnouncedEnd)
{
    config.strictUploadEnd = true;
    config.maxTlsVersion = TLS1_2_VERSION;
    serve();
    EXPECT_EQ(CURLE_OK, put("/new", "content"));
}

TEST_F(FtpServerTest, TwoHundredAndFiftySixSessionsAtOnce)
{
    constexpr std::size_t kSessions = 256;
    using boost::asio::ip::tcp;
    serve();
    boost::asio::io_context context;
    std::vector<tcp::socket> clients;
    const auto say = [](tcp::socket& client, const std::string& line) {
        boost::asio::write(client, boost::asio::buffer(line));
    };
    const auto hear = [](tcp::socket& client) {
        std::string line;
        boost::asio::read_until(client, boost::asio::dynamic_buffer(line), "\r\n");
        return line;
    };
    for (std::size_t i = 0; i < kSessions; ++i) {
        clients.emplace_back(context).connect({boost::asio::ip::address_v4::loopback(), server->port()});
        EXPECT_EQ("220 ready\r\n", hear(clients.back()));
    }
    // All are open; now each is served, the last ones first.
    for (auto client = clients.rbegin(); client != clients.rend(); ++client) {
        say(*client, "USER backup\r\n");
        EXPECT_EQ("331 password please\r\n", hear(*client));
        say(*client, "QUIT\r\n");
        EXPECT_EQ("221 goodbye\r\n", hear(*client));
    }
    EXPECT_EQ(std::vector<Transcript>(
                  kSessions, {"< 220 ready", "> USER backup", "< 331 password please", "> QUIT", "< 221 goodbye"}),
              server->transcripts());
}

} // namespace
