#include "harness/Crowd.h"

#include <LogProxy.h>

#include <array>
#include <future>

namespace {

using Response = boost::shared_ptr<ISFtpResponse>;

// The client below the facade, and the response that it returns.
class ResponsesAtOnce : public Crowd
{
};

// One thread at a time may use a response: it need not be the one that the operation ran on.
TEST_F(ResponsesAtOnce, AResponseMayBeReadAndDroppedOnAnotherThread)
{
    holdAt("CWD");
    std::filesystem::create_directory(served("here"));
    serve();
    const boost::shared_ptr<ISFtpClient> client = ISFtpClient::CreateClient();
    std::array<std::promise<Response>, kThreads> handedOn;
    run([&](unsigned thread) {
        const bool fails = thread % 2 == 0;
        TSP_RequestID.get() = 100 + thread;
        const SFtpRequest own = requestFor(fails ? "/missing/" : "/here/", "list-" + std::to_string(thread));
        handedOn.at((thread + 1) % kThreads).set_value(client->Listsftpdir(own, 0));
        live::takeRecords();

        Response received = handedOn.at(thread).get_future().get();
        const int code = received->GetErrCode();
        const std::string text = received->GetErrString();
        received.reset();
        // The other thread's outcome, under this thread's identifier.
        const std::string expected = fails ? "No error" : "Access denied to remote resource";
        return compare("the code", nameOf(fails ? CURLE_OK : CURLE_REMOTE_FILE_NOT_FOUND), nameOf(code)) +
               compare("the text", expected, text) +
               problem("the records", sameLines({std::to_string(100 + thread) +
                                                 " 4 CurlSFtpResponse::GetErrString(): Get error string: " + expected},
                                                live::takeRecordsWithIdentifiers()));
    });
    EXPECT_EQ(kThreads, held());
    for (const testserver::Transcript& transcript : sessions()) {
        EXPECT_TRUE(sameLines(quit(), lastOf(transcript, 2)));
    }
}

// A request is only read, so that one may be given to many calls.
TEST_F(ResponsesAtOnce, OneRequestForAllThreads)
{
    holdAt("LIST");
    writeFile(served("a.bak"), "content");
    serve();
    request.remotePath = url("/");
    const boost::shared_ptr<ISFtpClient> client = ISFtpClient::CreateClient();
    run([&](unsigned /*thread*/) {
        return compare("the result", nameOf(CURLE_OK), nameOf(client->TestSConnect(request, 0)));
    });
    EXPECT_EQ(kThreads, held());
    std::string listings;
    for (unsigned i = 0; i < kThreads; ++i) {
        listings += "-rw-r--r-- 1 backup backup 7 Jan 01 00:00 a.bak\n";
    }
    EXPECT_EQ(listings, out->content());
}

// Clients come and go on every thread while others work.
TEST_F(ResponsesAtOnce, ClientsOfManyThreads)
{
    holdAt("NLST");
    serve();
    run([&](unsigned thread) {
        const SFtpRequest own = requestFor("/", "list-" + std::to_string(thread));
        ISFtpClient* const client = ISFtpClient::GetInstance();
        const int code = client->Listsftpdir(own, 0)->GetErrCode();
        ISFtpClient::ReleaseInstance(client);
        return compare("the result", nameOf(CURLE_OK), nameOf(code));
    });
    EXPECT_EQ(kThreads, held());
}

} // namespace
