#include "RealServer.h"

#include "support/Codes.h"
#include "support/RandomBytes.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

// Several blocks and TLS records, the last one incomplete.
constexpr std::size_t kSize = 300001;

Lines sortedLinesOf(const std::string& text)
{
    Lines lines = linesOf(text);
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool beginsWith(const std::string& beginning, const std::string& line)
{
    return line.compare(0, beginning.size(), beginning) == 0;
}

// The rows of the first table in docs/servers.md, below its head and a line of dashes.
Lines documentedRows()
{
    const Lines lines = linesOf(contentOf(SERVERS_DOCUMENT));
    const auto head = std::find_if(lines.begin(), lines.end(),
                                   [](const std::string& line) { return beginsWith("| server |", line); });
    Lines rows;
    for (auto line = head; line != lines.end() && !line->empty(); ++line) {
        if (line != head && beginsWith("| ", *line)) {
            rows.push_back(*line);
        }
    }
    return rows;
}

std::string documentedRow(const Server& server)
{
    const Lines rows = documentedRows();
    const auto found = std::find_if(rows.begin(), rows.end(), [&server](const std::string& row) {
        return beginsWith("| " + server.title + " |", row);
    });
    return found == rows.end() ? "no row" : *found;
}

std::string rowOf(const Server& server, const Six<int>& codes)
{
    std::string row = "| " + server.title + " | ";
    for (const int code : {codes.test, codes.upload, codes.list, codes.download, codes.rename, codes.remove}) {
        row += (code == 0 ? "works" : std::to_string(code)) + " | ";
    }
    return row + server.remark + (server.remark.empty() ? "|" : " |");
}

Lines namesOf(const Six<int>& codes)
{
    return {"test " + nameOf(codes.test),         "upload " + nameOf(codes.upload), "list " + nameOf(codes.list),
            "download " + nameOf(codes.download), "rename " + nameOf(codes.rename), "delete " + nameOf(codes.remove)};
}

// The six operations on one server, in one test, because their results make one row of the matrix. Each has files of
// its own and checks its effect on both disks: the library's 0 is not enough.
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
        const std::string content = randomBytes(kSize);
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
        EXPECT_TRUE(sameLines(expected, sortedLinesOf(contentOf(request.localPath))));
        return code;
    }

    int download()
    {
        const std::string content = randomBytes(kSize);
        keep("fetched.bak", content);
        aimAt("fetched.bak");
        std::filesystem::remove(request.localPath);
        live::takeRecords();
        const int code = facade.DownLoadSFtpFile(request, errorText);
        EXPECT_EQ(code != -1, static_cast<bool>(hasLine("1 SFtpClient::CheckFileSizeBeforeDownload(): "
                                                        "remoteFileSizeByte =300001, fileSizeLimit = 53687091200",
                                                        live::takeRecords())));
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

TEST_P(Operations, ReturnWhatIsExpectedAndWhatTheMatrixSays)
{
    const Six<int> codes = {test(), upload(), list(), download(), rename(), remove()};
    EXPECT_TRUE(sameLines(namesOf(server.expected), namesOf(codes)));

    if (const char* const rows = std::getenv("SFTPCLIENT_MATRIX_ROWS")) {
        std::ofstream(rows, std::ios::app) << rowOf(server, codes) << "\n";
    } else {
        EXPECT_EQ(rowOf(server, codes), documentedRow(server)) << "scripts/matrix writes the document anew";
    }
}

INSTANTIATE_TEST_SUITE_P(OfDebian, Operations, testing::ValuesIn(servers()), idOf);

TEST(Matrix, HasOneRowForEachServer)
{
    Lines expected;
    for (const Server& server : servers()) {
        expected.push_back(documentedRow(server));
    }
    EXPECT_TRUE(sameLines(expected, documentedRows())) << "scripts/matrix writes the document anew";
}

} // namespace
