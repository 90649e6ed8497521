#include "support/ServerFixture.h"

#include <curl/curl.h>

#include <algorithm>
#include <filesystem>

namespace {

// libcurl's initialisation is the host's duty; here the test program is the host.
class LibcurlEnvironment : public testing::Environment
{
public:
    void SetUp() override { ASSERT_EQ(CURLE_OK, curl_global_init(CURL_GLOBAL_DEFAULT)); }
    void TearDown() override { curl_global_cleanup(); }
};

testing::Environment* const kLibcurl = testing::AddGlobalTestEnvironment(new LibcurlEnvironment);

Lines joined(const std::vector<Lines>& sessions)
{
    Lines lines;
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        lines = std::move(lines) + Lines{"-- session " + std::to_string(i + 1)} + sessions[i];
    }
    return lines;
}

} // namespace

ServerFixture::ServerFixture()
{
    std::filesystem::create_directory(served(""));
    std::filesystem::create_directory(local(""));
    config.root = served("");
    config.password = "correct horse battery";
    config.certificate = authority.issue();
}

ServerFixture::~ServerFixture() = default;

void ServerFixture::serve() { server = std::make_unique<testserver::FtpServer>(config); }

std::string ServerFixture::urlAt(unsigned port, const std::string& path) const
{
    const bool implicit = config.tls == testserver::TlsMode::Implicit;
    return (implicit ? "ftps://localhost:" : "ftp://localhost:") + std::to_string(port) + path;
}

bool ServerFixture::exists(const std::string& path) { return std::filesystem::exists(path); }

testing::AssertionResult sameSessions(const std::vector<Lines>& expected, const std::vector<Lines>& actual)
{
    return sameLines(joined(expected), joined(actual));
}

testing::AssertionResult sameBytes(const std::string& expected, const std::string& actual)
{
    const auto [ours, theirs] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    if (ours == expected.end() && theirs == actual.end()) {
        return testing::AssertionSuccess() << "the same " << expected.size() << " bytes";
    }
    return testing::AssertionFailure() << "expected " << expected.size() << " bytes, actual " << actual.size()
                                       << "; they differ from byte " << ours - expected.begin() << " on: actual "
                                       << testing::PrintToString(std::string(
                                              theirs, theirs + std::min<std::ptrdiff_t>(80, actual.end() - theirs)));
}
