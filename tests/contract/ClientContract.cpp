#include "contract/Contract.h"

#include <ISFtpClient.h>

#include <stdexcept>

namespace {

// One of the five wrappers of the client.
struct Wrapper
{
    const char* name;
    boost::shared_ptr<ISFtpResponse> (ISFtpClient::*call)(const SFtpRequest&, uint32_t);
    const char* cannotMake;
};

const Wrapper kWrappers[] = {
    {"Listsftpdir", &ISFtpClient::Listsftpdir, "Listsftpdir():, Create  CurlHttpClient object failed."},
    {"DownLoadSFtpFile", &ISFtpClient::DownLoadSFtpFile, "DownLoadSFtpFile():, Create  CurlHttpClient object failed."},
    {"ReNameSFtpFile", &ISFtpClient::ReNameSFtpFile, "ReNameSFtpFile():, Create  CurlHttpClient object failed."},
    {"DelSFtpFile", &ISFtpClient::DelSFtpFile, "DelSFtpFile():, Create  CurlHttpClient object failed."},
    {"UploadFileToSFtpServer", &ISFtpClient::UploadFileToSFtpServer,
     "UploadFileToSFtpServer, Create  CurlHttpClient object failed."},
};

// Each of its words is too long for the small-string buffer.
constexpr const char* kLongStatusLine = "protocol-of-a-long-name 00000000000000000000200 a-text-of-a-good-length";

class ClientContract : public Contract
{
protected:
    ClientContract() : client(ISFtpClient::CreateClient()) { writeFile(request.localPath, "content"); }

    static std::string record(const Wrapper& wrapper, const std::string& what)
    {
        return recordLine(4, std::string("CurlSFtpClient::") + wrapper.name, wrapper.cannotMake + ("|" + what));
    }

    boost::shared_ptr<ISFtpClient> client;
};

TEST_F(ClientContract, EachWrapperRunsItsOperationAndKeepsTheHandleAsLongAsTheResponse)
{
    for (const Wrapper& wrapper : kWrappers) {
        SCOPED_TRACE(wrapper.name);
        performGives(CURLE_REMOTE_ACCESS_DENIED);
        boost::shared_ptr<ISFtpResponse> response;
        const Lines during = journalOf([&] { response = (client.get()->*wrapper.call)(request, 90); });
        ASSERT_TRUE(response) << "a failed operation has a response";
        EXPECT_EQ(nameOf(CURLE_REMOTE_FILE_NOT_FOUND), nameOf(response->GetErrCode()));
        EXPECT_EQ(scripted::text(CURLE_REMOTE_ACCESS_DENIED), response->GetErrString());
        const std::string by = std::string(" CurlSFtpResponse::") + wrapper.name + "(): ";
        EXPECT_EQ("handle 1 made", during.front());
        const std::string& lastRecord = *(during.end() - 2);
        EXPECT_NE(std::string::npos, lastRecord.find(by)) << lastRecord;
        EXPECT_EQ("close", during.back());
        EXPECT_TRUE(sameLines({"handle 1 cleaned up"}, journalOf([&] { response.reset(); })));
    }
}

TEST_F(ClientContract, EachWrapperPassesOnTheTimeout)
{
    EXPECT_TRUE(hasLine("1 FTP_RESPONSE_TIMEOUT = 17", journalOf([&] { client->Listsftpdir(request, 17); })));
}

TEST_F(ClientContract, WithoutAHandleTheResponseIsEmpty)
{
    scripted::curl().handles = false;
    for (const Wrapper& wrapper : kWrappers) {
        SCOPED_TRACE(wrapper.name);
        boost::shared_ptr<ISFtpResponse> response;
        EXPECT_TRUE(sameLines({"curl_easy_init gives nothing", record(wrapper, "curl initialize failed.")},
                              journalOf([&] { response = (client.get()->*wrapper.call)(request, 90); })));
        EXPECT_FALSE(response);
    }
}

TEST_F(ClientContract, WithoutMemoryForTheResponseItIsEmpty)
{
    for (const Wrapper& wrapper : kWrappers) {
        SCOPED_TRACE(wrapper.name);
        boost::shared_ptr<ISFtpResponse> response;
        EXPECT_TRUE(sameLines({record(wrapper, "std::bad_alloc")}, journalOf([&] {
                                  memory::failAllocation(1);
                                  response = (client.get()->*wrapper.call)(request, 90);
                              })));
        EXPECT_FALSE(response);
    }
}

TEST_F(ClientContract, WithoutMemoryForTheSharedPointerTheResponseIsDestroyed)
{
    for (const Wrapper& wrapper : kWrappers) {
        SCOPED_TRACE(wrapper.name);
        boost::shared_ptr<ISFtpResponse> response;
        EXPECT_TRUE(
            sameLines({"handle 1 made", "handle 1 cleaned up", record(wrapper, "std::bad_alloc")}, journalOf([&] {
                          memory::failAllocation(2);
                          response = (client.get()->*wrapper.call)(request, 90);
                          EXPECT_EQ(0U, memory::livingBlocks());
                      })));
        EXPECT_FALSE(response);
    }
}

TEST_F(ClientContract, AnExceptionInTheOperationDestroysTheResponseAndPropagates)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::runtime_error("from within"); };
    for (const Wrapper& wrapper : kWrappers) {
        SCOPED_TRACE(wrapper.name);
        const Lines lines =
            journalOf([&] { EXPECT_THROW((client.get()->*wrapper.call)(request, 90), std::runtime_error); });
        EXPECT_EQ("handle 1 cleaned up", lines.back());
        for (const std::string& line : lines) {
            EXPECT_EQ(std::string::npos, line.find("CurlSFtpClient::")) << line;
        }
    }
}

TEST_F(ClientContract, InstancesAreDistinctAndIndependent)
{
    ISFtpClient* first = ISFtpClient::GetInstance();
    ISFtpClient* second = ISFtpClient::GetInstance();
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_NE(first, second);
    ISFtpClient::ReleaseInstance(first);
    EXPECT_EQ(CURLE_OK, second->TestSConnect(request, 90));
    ISFtpClient::ReleaseInstance(second);
}

TEST_F(ClientContract, InstancesAreReleased)
{
    expectNothingNoted([] {
        ISFtpClient* instance = ISFtpClient::GetInstance();
        EXPECT_EQ(1U, memory::livingBlocks());
        ISFtpClient::ReleaseInstance(instance);
        EXPECT_EQ(0U, memory::livingBlocks());
    });
}

TEST_F(ClientContract, ReleasingNothingDoesNothing)
{
    expectNothingNoted([] { ISFtpClient::ReleaseInstance(nullptr); });
}

class ClientThatTellsItsEnd : public ISFtpClient
{
public:
    explicit ClientThatTellsItsEnd(bool& ended) : m_ended(ended) {}
    ~ClientThatTellsItsEnd() override { m_ended = true; }
    int TestSConnect(const SFtpRequest&, uint32_t) override { return 0; }
    boost::shared_ptr<ISFtpResponse> Listsftpdir(const SFtpRequest&, uint32_t) override { return {}; }
    boost::shared_ptr<ISFtpResponse> DownLoadSFtpFile(const SFtpRequest&, uint32_t) override { return {}; }
    boost::shared_ptr<ISFtpResponse> ReNameSFtpFile(const SFtpRequest&, uint32_t) override { return {}; }
    boost::shared_ptr<ISFtpResponse> DelSFtpFile(const SFtpRequest&, uint32_t) override { return {}; }
    boost::shared_ptr<ISFtpResponse> UploadFileToSFtpServer(const SFtpRequest&, uint32_t) override { return {}; }

private:
    bool& m_ended;
};

TEST_F(ClientContract, AnInstanceIsReleasedThroughItsVirtualDestructor)
{
    bool ended = false;
    ISFtpClient::ReleaseInstance(new ClientThatTellsItsEnd(ended));
    EXPECT_TRUE(ended);
}

TEST_F(ClientContract, AnInstanceThatCannotBeMadeIsNullWithARecord)
{
    EXPECT_TRUE(
        sameLines({recordLine(4, "ISFtpClient::GetInstance", "Create  CurlSFtpClient object failed.|std::bad_alloc")},
                  journalOf([] {
                      memory::failAllocation(1);
                      EXPECT_EQ(nullptr, ISFtpClient::GetInstance());
                  })));
}

TEST_F(ClientContract, ExceptionsOfOtherKindsPropagate)
{
    expectNothingNoted([] {
        memory::failAllocationStrangely(1);
        EXPECT_THROW(ISFtpClient::GetInstance(), memory::ForeignException);
    });
    for (const Wrapper& wrapper : kWrappers) {
        SCOPED_TRACE(wrapper.name);
        expectNothingNoted([&] {
            memory::failAllocationStrangely(1);
            EXPECT_THROW((client.get()->*wrapper.call)(request, 90), memory::ForeignException);
        });
    }
    CurlSFtpResponse response;
    expectNothingNoted([&] {
        // The third: the list of pieces and the second piece come before the trimmed copy.
        for (unsigned nth = 1; nth < 6; ++nth) {
            memory::failAllocationStrangely(nth);
            EXPECT_THROW(response.ParseStatusLine(kLongStatusLine), memory::ForeignException) << nth;
        }
    });
    EXPECT_EQ(0U, response.statusCode);
}

TEST_F(ClientContract, AClientThatCannotBeMadeThrowsAndLeavesNothing)
{
    for (const unsigned nth : {1U, 2U}) {
        SCOPED_TRACE(nth);
        expectNothingNoted([nth] {
            memory::failAllocation(nth);
            EXPECT_THROW(ISFtpClient::CreateClient(), std::bad_alloc);
            EXPECT_EQ(0U, memory::livingBlocks());
        });
    }
}

TEST_F(ClientContract, CreatedClientsAreDistinctAndEndWithTheirLastPointer)
{
    EXPECT_NE(client, ISFtpClient::CreateClient());
    expectNothingNoted([] {
        boost::shared_ptr<ISFtpClient> created = ISFtpClient::CreateClient();
        EXPECT_EQ(2U, memory::livingBlocks());
        created.reset();
        EXPECT_EQ(0U, memory::livingBlocks());
    });
}

} // namespace
