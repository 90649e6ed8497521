#include "Matrix.h"
#include "RealServer.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <sstream>

namespace {

// Several blocks and TLS records, and no whole number of them.
std::string randomBytes()
{
    std::mt19937 random(20261121);
    std::string bytes(300001, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

Lines sortedLinesOf(const std::string& text)
{
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool sizeWasTold(std::size_t size)
{
    const std::string record = "remoteFileSizeByte =" + std::to_string(size) + ",";
    const Lines records = live::takeRecords();
    return std::any_of(records.begin(), records.end(),
                       [&](const std::string& each) { return each.find(record) != std::string::npos; });
}

// The six operations on one server, in one test, because their results make one row of the matrix. Each has files of
// its own and looks for its effect on the disks: the library's 0 is not enough.
class Operations : public RealServer
{
protected:
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
        const std::string content = randomBytes();
        aimAt("new/folder/sent.bak");
        writeFile(request.localPath, content);
        const int code = facade.UploadFileToSFtpServer(request, errorText);
        EXPECT_EQ(code == 0, contentOf(served("new/folder/sent.bak")) == content);
        return code;
    }

    int list()
    {
        keep("listed/a.bak", "a");
        keep("listed/b.bak", "b");
        aimAt("listed/");
        const int code = facade.Listsftpdir(request, errorText);
        Lines expected;
        if (code == 0) {
            expected = {"a.bak", "b.bak"};
        }
        if (code == 0 && server.listing == Listing::FilesAndDots) {
            expected = {".", "..", "a.bak", "b.bak"};
        }
        EXPECT_EQ(expected, sortedLinesOf(contentOf(request.localPath)));
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
};

TEST_P(Operations, AnswerAsExpectedAndAsTheMatrixSays)
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

INSTANTIATE_TEST_SUITE_P(OfDebian, Operations, testing::ValuesIn(servers()), idOf);

TEST(Matrix, HasOneRowForEachServer)
{
    std::vector<std::string> titles;
    for (const Server& server : servers()) {
        titles.push_back(server.title);
    }
    EXPECT_EQ(titles, Matrix(SERVERS_DOCUMENT).titles()) << "scripts/matrix writes the document anew";
}

} // namespace
