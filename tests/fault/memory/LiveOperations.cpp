#include "LiveWalk.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <utility>

namespace {

using memory::Shortage;
using memory::Whose;

enum class Kind
{
    List,
    Download,
    Rename,
    Delete,
    Upload,
    SizeCheck,
    ConnectionTest
};

struct Operation
{
    const char* name;
    Kind kind;
};

std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }

class LiveOperations : public LiveWalk, public testing::WithParamInterface<Operation>
{
protected:
    LiveOperations()
    {
        // An address, because libcurl resolves names on its own thread.
        request.remotePath = "ftp://127.0.0.1:" + std::to_string(request.port) + "/weekly/";
        request.remoteFileName = "a.bak";
    }

    void walkThrough(Whose whose, Shortage shortage)
    {
        walk(piece(), whose, shortage, [this, shortage](const Outcome& outcome) {
            if (outcome.result != 0 && outcome.result != kThrown) {
                // Every failure has a record, and a record needs memory.
                EXPECT_EQ(Shortage::Once, shortage) << nameOf(outcome.result);
                EXPECT_NE(usualRecords(), outcome.records);
            }
        });
    }

    Piece piece()
    {
        switch (GetParam().kind) {
        case Kind::List:
            return of(&SFtpClient::Listsftpdir, [this] { return contentOf(local("fetched")) == "a.bak\n"; });
        case Kind::Download:
            request.remotePath += "a.bak";
            return of(&SFtpClient::DownLoadSFtpFile, [this] { return contentOf(local("fetched")) == kContent; });
        case Kind::Rename:
            request.localPath = "b.bak";
            return of(&SFtpClient::ReNameSFtpFile, [this] { return exists(served("weekly/b.bak")); });
        case Kind::Delete:
            return of(&SFtpClient::DelSFtpFile, [this] { return !exists(served("weekly/a.bak")); });
        case Kind::Upload:
            request.remotePath += "c.bak";
            request.localPath = local("sent");
            return of(&SFtpClient::UploadFileToSFtpServer,
                      [this] { return contentOf(served("weekly/c.bak")) == kContent; });
        case Kind::SizeCheck:
            request.remotePath += "a.bak";
            return {[this] { prepare(); },
                    [this] { return SFtpClient().CheckFileSizeBeforeDownload(request) ? 0 : -1; },
                    [this] { return serverSaid("< 213 11"); }};
        case Kind::ConnectionTest:
            return {[this] { prepare(); }, [this] { return testConnection(); },
                    [this] { return serverSaid("< 230 logged in"); }};
        }
        return {};
    }

private:
    Piece of(int (SFtpClient::*call)(const SFtpRequest&, std::string&), std::function<bool()> done)
    {
        return {[this] { prepare(); },
                [this, call] {
                    std::string text = "as it was";
                    SFtpClient own;
                    const int result = (own.*call)(request, text);
                    const memory::Pause pause;
                    EXPECT_EQ(result <= 0, text == "as it was") << result;
                    return result;
                },
                std::move(done)};
    }

    void prepare()
    {
        std::filesystem::remove_all(served("weekly"));
        std::filesystem::create_directory(served("weekly"));
        writeFile(served("weekly/a.bak"), kContent);
        writeFile(local("sent"), kContent);
        std::filesystem::remove(local("fetched"));
        if (GetParam().kind == Kind::List || GetParam().kind == Kind::Download) {
            request.localPath = local("fetched");
        }
    }

    bool serverSaid(const std::string& line) const
    {
        return std::count(lastSession().begin(), lastSession().end(), line) != 0;
    }

    static constexpr const char* kContent = "the content";
};

TEST_P(LiveOperations, EachOfTheLibrarysOwnAllocationsFailsOnce) { walkThrough(Whose::Library, Shortage::Once); }

TEST_P(LiveOperations, EachOfTheLibrarysOwnAllocationsFailsWithAllAfterIt)
{
    walkThrough(Whose::Library, Shortage::ForGood);
}

std::string nameOfCase(const testing::TestParamInfo<Operation>& parameter) { return parameter.param.name; }

INSTANTIATE_TEST_SUITE_P(Each, LiveOperations,
                         testing::Values(Operation{"List", Kind::List}, Operation{"Download", Kind::Download},
                                         Operation{"Rename", Kind::Rename}, Operation{"Delete", Kind::Delete},
                                         Operation{"Upload", Kind::Upload}, Operation{"SizeCheck", Kind::SizeCheck},
                                         Operation{"ConnectionTest", Kind::ConnectionTest}),
                         nameOfCase);

class LiveHeap : public LiveOperations
{
};

TEST_P(LiveHeap, EachAllocationFailsOnce) { walkThrough(Whose::Everyone, Shortage::Once); }

TEST_P(LiveHeap, EachAllocationFailsWithAllAfterIt) { walkThrough(Whose::Everyone, Shortage::ForGood); }

// In the clear, libcurl releases everything whichever allocation fails. With TLS one transfer takes 12400 allocations,
// too many to walk through each time; LiveHook walks through those of OpenSSL that the library itself causes.
INSTANTIATE_TEST_SUITE_P(Clear, LiveHeap,
                         testing::Values(Operation{"Upload", Kind::Upload}, Operation{"SizeCheck", Kind::SizeCheck}),
                         nameOfCase);

} // namespace
