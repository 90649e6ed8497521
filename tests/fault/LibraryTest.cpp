// The rows through the library.
#include "Fault.h"
#include "HastenedConnecting.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <regex>

Rows chosen(const Rows& rows) { return rows; }

namespace {

double secondsOf(const std::function<void()>& action)
{
    const auto begun = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

boost::shared_ptr<ISFtpResponse> transfer(const Row& row, ISFtpClient& client, const SFtpRequest& request)
{
    constexpr uint32_t kWithoutEffect = 90;
    switch (row.operation) {
    case Operation::List:
        return client.Listsftpdir(request, row.responseTimeout);
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

// Where releases of libcurl differ, the table of them has such a line.
void expectInDocument(const Row& row)
{
    for (const int code : row.in788) {
        const std::regex line("\\| .* \\| " + std::to_string(code) + "\\b[^|]*\\| " + std::to_string(row.in814Code) +
                              "\\b.*");
        const Lines document = linesOf(contentOf(TROUBLESHOOTING_DOCUMENT));
        EXPECT_TRUE(std::any_of(document.begin(), document.end(),
                                [&line](const std::string& each) { return std::regex_match(each, line); }))
            << "docs/troubleshooting.md has no line with " << code << " and " << row.in814Code;
    }
}

TEST_P(Fault, EndsAsExpected)
{
    const std::optional<HastenedConnecting> hastened =
        row().hasten ? std::make_optional<HastenedConnecting>() : std::nullopt;
    int code = -1;
    boost::shared_ptr<ISFtpResponse> response;
    EXPECT_GT(row().longest, secondsOf([&] {
                  if (row().operation == Operation::Connect) {
                      code = testConnection();
                  } else if (row().operation == Operation::Checked) {
                      code = facade.DownLoadSFtpFile(request, errorText);
                  } else {
                      response = transfer(row(), *ISFtpClient::CreateClient(), request);
                      code = response ? response->GetErrCode() : -1;
                  }
              }))
        << "seconds for the call";
    // This sends QUIT.
    EXPECT_GT(kLongest, secondsOf([&] { response.reset(); })) << "seconds for the end of the response";
    expectCode(code);
    expectLeft(code);
    expectInDocument(row());
}

} // namespace
