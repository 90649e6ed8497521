#include "harness/Crowd.h"

#include <LogProxy.h>

#include <array>
#include <future>

namespace {

using Response = boost::shared_ptr<ISFtpResponse>;

// The client below the facade, and what it answers with.
class ResponsesAtOnce : public Crowd
{
protected:
    static Lines goodbyeLines(const testserver::Transcript& transcript)
    {
        return transcript.size() < 2 ? Lines{} : Lines(transcript.end() - 2, transcript.end());
    }
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
        SFtpRequest own = request;
        own.remotePath = url(fails ? "/missing/" : "/here/");
        own.localPath = local("list-" + std::to_string(thread));
        handedOn.at((thread + 1) % kThreads).set_value(client->Listsftpdir(own, 0));
        live::takeRecords();

        Response received = handedOn.at(thread).get_future().get();
        const int code = received->GetErrCode();
        const std::string text = received->GetErrString();
        received.reset();
        // The neighbour's outcome, under this thread's identifier.
        const std::string expected = fails ? "No error" : "Access denied to remote resource";
        return compare("the code", fails ? 0 : 78, code) + compare("the text", expected, text) +
               compare("the records",
                       Lines{std::to_string(100 + thread) +
                             " 4 CurlSFtpResponse::GetErrString(): Get error string: " + expected},
                       live::takeRecordsWithIdentifiers());
    });
    EXPECT_EQ(kThreads, held());
    for (const testserver::Transcript& transcript : sessions()) {
        EXPECT_EQ(goodbye(), goodbyeLines(transcript));
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
    run([&](unsigned /*thread*/) { return compare("the result", 0, client->TestSConnect(request, 0)); });
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
        SFtpRequest own = request;
        own.remotePath = url("/");
        own.localPath = local("list-" + std::to_string(thread));
        ISFtpClient* const client = ISFtpClient::GetInstance();
        const int code = client->Listsftpdir(own, 0)->GetErrCode();
        ISFtpClient::ReleaseInstance(client);
        return compare("the result", 0, code);
    });
    EXPECT_EQ(kThreads, held());
}

} // namespace
