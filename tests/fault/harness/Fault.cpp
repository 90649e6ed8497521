#include "harness/Fault.h"

#include "harness/HastenedConnecting.h"
#include "harness/RunTool.h"

#include <curl/curl.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <stdexcept>

namespace {

using Clock = std::chrono::steady_clock;

// What a call may take that is not told how long to wait: the library's time-out for connecting.
constexpr double kLongest = 20;
// On top of a response time-out: libcurl may notice up to a second late, and the machine may be busy. It stays below
// every other limit that could end a call, of which the shortest are 20 seconds.
constexpr double kLateness = 7;

std::chrono::duration<double> durationOf(const std::function<void()>& action)
{
    const auto begun = Clock::now();
    action();
    return Clock::now() - begun;
}

} // namespace

void FaultRow::arrange()
{
    ASSERT_TRUE(row().codes.size() == 1 || !row().why.empty()) << "a row with several codes says why";
    std::filesystem::create_directory(served("dir"));
    writeFile(served("dir/a.bak"), begin(kAll));
    writeFile(served("dir/b.bak"), "another");
    if (row().operation == Operation::Upload) {
        writeFile(request.localPath, begin(kUploaded));
    } else if (row().operation == Operation::Rename) {
        request.localPath = "new.bak";
    } else if (row().operation == Operation::Download || row().operation == Operation::List) {
        writeFile(request.localPath, "an old file, which is to be emptied");
    }
    request.remoteFileName = "a.bak";
    for (const std::string& fault : row().faults) {
        config.faults.push_back(testserver::parseFault(fault));
    }
    Scene scene{config, authority, request, ""};
    if (row().arrange != nullptr) {
        row().arrange(scene);
    }
    // Where the request's certificate does not count, the machine's store trusts the same CA.
    trustByDefault(request.caCert);
    serve();
    if (scene.serverGone) {
        stopServing();
    }
    request.remotePath = urlOf(scene);
}

std::string FaultRow::urlOf(const Scene& scene) const
{
    const std::string usual = url(row().path);
    return scene.scheme.empty() ? usual : scene.scheme + usual.substr(usual.find(':'));
}

std::string FaultRow::target() const
{
    switch (row().operation) {
    case Operation::Rename:
        return served("dir/new.bak");
    case Operation::Delete:
        return served("dir/a.bak");
    case Operation::Upload:
        return served(row().path.substr(1));
    default:
        return local("file");
    }
}

void FaultRow::expectCode(int code) const
{
    EXPECT_EQ(1U, row().codes.count(code))
        << "the code is " << code << ", expected " << testing::PrintToString(row().codes) << "\n"
        << row() << "\n"
        << row().why;
}

void FaultRow::expectLeft(int code) const
{
    if (!row().left || row().left->code.value_or(code) != code) {
        return;
    }
    const std::string content = contentOf(target());
    const Left& left = *row().left;
    const std::string expected = left.bytes ? begin(*left.bytes) : left.text;
    const bool asExpected = left.orLess ? expected.compare(0, content.size(), content) == 0 : expected == content;
    EXPECT_TRUE(asExpected) << target() << " holds " << content.size() << " bytes, beginning with "
                            << testing::PrintToString(content.substr(0, 80));
}

boost::shared_ptr<ISFtpResponse> Fault::transfer(ISFtpClient& client) const
{
    constexpr uint32_t kWithoutEffect = 90;
    switch (row().operation) {
    case Operation::List:
        return client.Listsftpdir(request, row().responseTimeout);
    case Operation::Download:
        return client.DownLoadSFtpFile(request, kWithoutEffect);
    case Operation::Rename:
        return client.ReNameSFtpFile(request, kWithoutEffect);
    case Operation::Delete:
        return client.DelSFtpFile(request, kWithoutEffect);
    default:
        return client.UploadFileToSFtpServer(request, kWithoutEffect);
    }
}

int Fault::operate()
{
    const std::optional<HastenedConnecting> hastened =
        row().hasten ? std::make_optional<HastenedConnecting>() : std::nullopt;
    int code = -1;
    if (row().operation == Operation::Connect) {
        called = durationOf([&] { code = testConnection(); });
    } else if (row().operation == Operation::Checked) {
        called = durationOf([&] { code = facade.DownLoadSFtpFile(request, errorText); });
    } else {
        boost::shared_ptr<ISFtpResponse> response;
        called = durationOf([&] { response = transfer(*ISFtpClient::CreateClient()); });
        code = response ? response->GetErrCode() : -1;
        released = durationOf([&] { response.reset(); });
    }
    return code;
}

TEST_P(Fault, EndsAsItMust)
{
    ASSERT_NO_FATAL_FAILURE(arrange());
    const int code = operate();
    expectCode(code);
    expectLeft(code);
    const double limit = row().responseTimeout == 0 ? kLongest : row().responseTimeout + kLateness;
    EXPECT_GT(limit, called.count());
    EXPECT_GT(limit, released.count());
}

std::vector<std::string> Tool::arguments() const
{
    std::vector<std::string> all = {"--disable",  "--silent",
                                    "--max-time", "25",
                                    "--user",     request.userName + ":" + request.password,
                                    "--cacert",   local("default-trust.pem")};
    const auto add = [&all](const std::vector<std::string>& more) { all.insert(all.end(), more.begin(), more.end()); };
    if (row().operation != Operation::Upload) {
        add({"--ssl-reqd", "--output", local("file")});
    }
    switch (row().operation) {
    case Operation::List:
        add({"--list-only"});
        break;
    case Operation::Rename:
        add({"--quote", "-rename /dir/a.bak /dir/new.bak"});
        break;
    case Operation::Delete:
        add({"--quote", "-rm /dir/a.bak"});
        break;
    case Operation::Upload:
        add({"--upload-file", local("file"), "--ftp-create-dirs", "--connect-timeout", "20"});
        break;
    default:
        add({"--connect-timeout", "20"});
        break;
    }
    add({request.remotePath});
    return all;
}

TEST_P(Tool, AnswersTheSame)
{
    ASSERT_NO_FATAL_FAILURE(arrange());
    if (row().operation != Operation::Upload) {
        // The library empties or creates the file before it asks the server, the tool when there is something to write.
        writeFile(local("file"), "");
    }
    int code = -1;
    const Seconds took = durationOf([&] { code = runTool(arguments()); });
    const bool known = code == CURLE_REMOTE_ACCESS_DENIED && row().operation != Operation::Connect;
    code = known ? CURLE_REMOTE_FILE_NOT_FOUND : code;
    expectCode(code);
    expectLeft(code);
    EXPECT_GT(kLongest, took.count());
}

std::string nameOf(const testing::TestParamInfo<FaultCase>& info) { return info.param.name; }

std::vector<FaultCase> replayed(const std::vector<FaultCase>& rows)
{
    std::vector<FaultCase> some;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(some), [](const FaultCase& row) {
        // The tool cannot be told a time-out for replies, nor to check a size first.
        const bool possible = row.replayed && row.responseTimeout == 0 && row.operation != Operation::Checked;
        if (!possible && row.basis == Basis::Tool) {
            throw std::logic_error(row.name + " says that the tool was asked, which it cannot be.");
        }
        return possible;
    });
    return some;
}
