#include "Inetd.h"
#include "Matrix.h"
#include "PrivateSystem.h"
#include "Server.h"
#include "harness/Live.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>

// For the tests' names in ctest.
static void PrintTo(const Server& server, std::ostream* stream) { *stream << server.title; }

namespace {

// Every operation that the library has, against the daemons of Debian. The six of a server share its daemon and run in
// one test, because their results make one row of the matrix; each finds files of its own.
class Servers : public Live, public testing::WithParamInterface<Server>
{
protected:
    void SetUp() override
    {
        const std::string off = std::getenv(kOff) == nullptr ? "" : std::getenv(kOff);
        if ((" " + off + " ").find(" " + server.package + " ") != std::string::npos) {
            GTEST_SKIP() << server.package << " is switched off by " << kOff << ".";
        }
        ASSERT_TRUE(exists(std::string(SERVERS_FOLDER) + "/" + server.package))
            << server.package << " is not unpacked in " << SERVERS_FOLDER << ": run scripts/servers, or put "
            << server.package << " into the variable " << kOff << " to do without it.";
        ASSERT_EQ(0U, geteuid()) << server.package << " needs root, to change to the user who logs in and to see a "
                                 << "system of its own: run this as root, or put " << server.package
                                 << " into the variable " << kOff << " to do without it.";
        start();
    }

    ~Servers() override
    {
        if (HasFailure()) {
            // The base prints what was redirected, this included.
            for (const char* const log : {"stderr.log", "system.log", "tls.log", "sftp.log"}) {
                std::cout << server.title << ", " << log << ":\n" << contentOf(daemonFile(log)) << "\n";
            }
        }
    }

    // The library's own 0 is not enough: each checks what is on the disks.

    int test()
    {
        keep("seen.bak", "");
        aimAt("");
        const int code = testConnection();
        EXPECT_EQ(code == 0, out->content().find("seen.bak") != std::string::npos);
        return code;
    }

    int upload()
    {
        aimAt("sent.bak");
        const std::string content = randomBytes();
        writeFile(request.localPath, content);
        const int code = facade.UploadFileToSFtpServer(request, errorText);
        EXPECT_EQ(code == 0, contentOf(served("sent.bak")) == content);
        return code;
    }

    int list()
    {
        keep("listed/a.bak", "a");
        keep("listed/b.bak", "b");
        aimAt("listed/");
        const int code = facade.Listsftpdir(request, errorText);
        // SFTP lists the folder itself and the one above as well, and servers sort as they like.
        Lines names = linesOf(contentOf(request.localPath));
        names.erase(std::remove_if(names.begin(), names.end(),
                                   [](const std::string& name) { return name == "." || name == ".."; }),
                    names.end());
        std::sort(names.begin(), names.end());
        EXPECT_EQ(code == 0 ? Lines({"a.bak", "b.bak"}) : Lines(), names);
        return code;
    }

    int download()
    {
        const std::string content = randomBytes();
        keep("fetched.bak", content);
        aimAt("fetched.bak");
        std::filesystem::remove(request.localPath);
        live::takeRecords();
        const int code = facade.DownLoadSFtpFile(request, errorText);
        EXPECT_EQ(code != -1, sizeWasTold(content.size()));
        EXPECT_EQ(code == 0, contentOf(request.localPath) == content);
        return code;
    }

    int rename()
    {
        keep("weekly/old.bak", "renamed");
        aimAt("weekly/");
        request.remoteFileName = "old.bak";
        request.localPath = "new.bak";
        const int code = facade.ReNameSFtpFile(request, errorText);
        EXPECT_EQ(code == 0, contentOf(served("weekly/new.bak")) == "renamed");
        EXPECT_EQ(code == 0, !exists(served("weekly/old.bak")));
        return code;
    }

    int remove()
    {
        keep("weekly/gone.bak", "deleted");
        aimAt("weekly/");
        request.remoteFileName = "gone.bak";
        const int code = facade.DelSFtpFile(request, errorText);
        EXPECT_EQ(code == 0, !exists(served("weekly/gone.bak")));
        return code;
    }

    Server server = GetParam();

private:
    static constexpr const char* kOff = "SFTPCLIENT_SERVERS_OFF";

    std::string daemonFile(const std::string& name) const { return local("daemon/" + name); }

    void start()
    {
        std::filesystem::create_directory(daemonFile(""));
        writeFile(daemonFile("cert.pem"), config.certificate.certificatePem);
        writeFile(daemonFile("key.pem"), config.certificate.privateKeyPem);
        if (server.scheme == "sftp") {
            makeHostKey();
        }
        trustByDefault(authority.certificatePem());
        request.userName = PrivateSystem::kUser;
        request.password = PrivateSystem::kPassword;
        const Start how = server.configure(daemonFile(""));
        m_daemon = std::make_unique<Inetd>(PrivateSystem(daemonFile(""), served(""), SERVERS_FOLDER), how.command,
                                           how.environment, daemonFile("stderr.log"));
        request.port = m_daemon->port();
    }

    void makeHostKey()
    {
        std::string path = daemonFile("host_key");
        const std::string command = "ssh-keygen -q -t ecdsa -m PEM -N '' -f '" + path + "' </dev/null";
        // The path is the test's own, made by mkdtemp.
        ASSERT_EQ(0, std::system(command.c_str())) << "ssh-keygen, of openssh-client, made no host key"; // NOLINT
    }

    void aimAt(const std::string& path)
    {
        request.remotePath = server.scheme + "://localhost:" + std::to_string(request.port) + server.root + path;
        request.localPath = local("file");
    }

    // A file of the user who logs in, in a folder of theirs.
    void keep(const std::string& name, const std::string& content)
    {
        const std::filesystem::path path = served(name);
        std::filesystem::create_directories(path.parent_path());
        writeFile(path, content);
        for (const std::filesystem::path& each : {path.parent_path(), path}) {
            EXPECT_EQ(0, chown(each.c_str(), PrivateSystem::kUserId, PrivateSystem::kUserId));
        }
    }

    static bool sizeWasTold(std::size_t size)
    {
        const std::string record = "remoteFileSizeByte =" + std::to_string(size) + ",";
        const Lines records = live::takeRecords();
        return std::any_of(records.begin(), records.end(),
                           [&](const std::string& each) { return each.find(record) != std::string::npos; });
    }

    // Several blocks and TLS records, and no whole number of them.
    static std::string randomBytes()
    {
        std::mt19937 random(20261121);
        std::string bytes(300001, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        return bytes;
    }

    static Lines linesOf(const std::string& text)
    {
        std::istringstream stream(text);
        Lines lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    std::unique_ptr<Inetd> m_daemon;
};

TEST_P(Servers, AnswersAsExpectedAndAsTheMatrixSays)
{
    const Six<int> codes = {test(), upload(), list(), download(), rename(), remove()};
    EXPECT_EQ(server.expected.test, codes.test);
    EXPECT_EQ(server.expected.upload, codes.upload);
    EXPECT_EQ(server.expected.list, codes.list);
    EXPECT_EQ(server.expected.download, codes.download);
    EXPECT_EQ(server.expected.rename, codes.rename);
    EXPECT_EQ(server.expected.remove, codes.remove);

    Matrix matrix(SERVERS_DOCUMENT);
    if (std::getenv("SFTPCLIENT_WRITE_MATRIX") != nullptr) {
        matrix.put(server, Matrix::row(server, codes));
        matrix.write();
    }
    EXPECT_EQ(Matrix::row(server, codes), matrix.rowOf(server)) << "scripts/matrix writes the document anew";
}

INSTANTIATE_TEST_SUITE_P(OfDebian, Servers, testing::ValuesIn(servers()),
                         [](const testing::TestParamInfo<Server>& of) { return of.param.id; });

TEST(Matrix, HasOneRowForEachServer)
{
    std::vector<std::string> titles;
    for (const Server& server : servers()) {
        titles.push_back(server.title);
    }
    EXPECT_EQ(titles, Matrix(SERVERS_DOCUMENT).titles()) << "scripts/matrix writes the document anew";
}

} // namespace
