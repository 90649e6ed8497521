#include "harness/Served.h"
#include "support/CurlRelease.h"

#include <operation/TransferSeam.h>

namespace {

class Observer : public TransferObserver
{
public:
    std::chrono::seconds begins() override
    {
        journal.emplace_back("begins");
        return std::chrono::seconds(20);
    }
    void connected() override { journal.emplace_back("connected"); }
    void traced(curl_infotype type, std::string_view text) override
    {
        if (type == CURLINFO_HEADER_OUT) {
            journal.emplace_back(text.substr(0, text.find('\r')));
        }
    }
    bool goesOn(curl_off_t /*bytes*/, curl_off_t /*total*/) override
    {
        asked = true;
        return true;
    }
    CURLcode ended(CURLcode result, curl_off_t /*bytes*/) override
    {
        journal.push_back("ended " + std::to_string(result));
        return CURLE_OPERATION_TIMEDOUT;
    }

    std::vector<std::string> journal;
    bool asked = false;
};

} // namespace

// At the handle's cleanup, nobody could end the wait for the answer to QUIT.
TEST_F(Served, ClosesTheConnectionWithinTheTransfer)
{
    config.tls = testserver::TlsMode::Plain;
    serve();
    Observer observer;
    const ObservedTransfers observed(observer);
    CURL* const handle = curl_easy_init();
    const std::string place = plainUrl();
    curl_easy_setopt(handle, CURLOPT_URL, place.c_str());
    curl_easy_setopt(handle, CURLOPT_USERNAME, "backup");
    curl_easy_setopt(handle, CURLOPT_PASSWORD, config.password.c_str());
    curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, curl_easy_perform(handle)) << "the observer's word counts";
    curl_socket_t connection = 0;
    curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &connection);
    EXPECT_EQ(CURL_SOCKET_BAD, connection);
    curl_easy_cleanup(handle);
    std::vector<std::string> expected = {"begins", "USER backup", "PASS " + config.password, "PWD", "connected"};
    if (!isCurl814()) { // which does not show its QUIT
        expected.emplace_back("QUIT");
    }
    expected.emplace_back("ended 0");
    EXPECT_EQ(expected, observer.journal);
    EXPECT_TRUE(observer.asked);
}
