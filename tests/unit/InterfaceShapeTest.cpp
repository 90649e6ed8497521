#include "transfer/CurlSFtpClient.h"
#include "transfer/CurlSFtpResponse.h"

#include <ISFtpClient.h>
#include <ISFtpResponse.h>
#include <SFtpClient.h>
#include <SFtpRequest.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

// Hosts are compiled against these shapes: slots, fields and types.
namespace {

constexpr std::ptrdiff_t kNotVirtual = -1;

constexpr bool kIs64 = sizeof(void*) == 8;

// The slot in the table of virtual functions. A pointer to a virtual member function is 1 + the offset of its slot,
// because a function's own address is even; on ARM, where it need not be, the 1 stands in the adjustment of `this`.
template <typename Member>
std::ptrdiff_t slotOf(Member member)
{
    std::array<std::ptrdiff_t, 2> parts = {};
    std::memcpy(parts.data(), &member, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
    const bool isVirtual = parts[1] % 2 != 0;
#else
    const bool isVirtual = parts[0] % 2 != 0;
#endif
    return isVirtual ? parts[0] / static_cast<std::ptrdiff_t>(sizeof(void*)) : kNotVirtual;
}

template <typename Object, typename Member>
std::ptrdiff_t offsetIn(const Object& object, const Member& member)
{
    return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&object);
}

using Slots = std::vector<std::ptrdiff_t>;
using Response = boost::shared_ptr<ISFtpResponse>;

// The destructor comes first everywhere and takes two slots.

TEST(InterfaceShape, Response)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<ISFtpResponse>);
    EXPECT_TRUE(std::is_abstract_v<ISFtpResponse>);
    EXPECT_EQ(sizeof(void*), sizeof(ISFtpResponse));
    int (ISFtpResponse::*const code)() = &ISFtpResponse::GetErrCode;
    std::string (ISFtpResponse::*const text)() = &ISFtpResponse::GetErrString;
    EXPECT_EQ((Slots{2, 3}), (Slots{slotOf(code), slotOf(text)}));
}

TEST(InterfaceShape, Client)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<ISFtpClient>);
    EXPECT_TRUE(std::is_abstract_v<ISFtpClient>);
    EXPECT_EQ(sizeof(void*), sizeof(ISFtpClient));
    using Operation = Response (ISFtpClient::*)(const SFtpRequest&, uint32_t);
    int (ISFtpClient::*const test)(const SFtpRequest&, uint32_t) = &ISFtpClient::TestSConnect;
    const Operation list = &ISFtpClient::Listsftpdir;
    const Operation download = &ISFtpClient::DownLoadSFtpFile;
    const Operation rename = &ISFtpClient::ReNameSFtpFile;
    const Operation erase = &ISFtpClient::DelSFtpFile;
    const Operation upload = &ISFtpClient::UploadFileToSFtpServer;
    EXPECT_EQ((Slots{2, 3, 4, 5, 6, 7}),
              (Slots{slotOf(test), slotOf(list), slotOf(download), slotOf(rename), slotOf(erase), slotOf(upload)}));
    EXPECT_TRUE((std::is_same_v<boost::shared_ptr<ISFtpClient> (*)(), decltype(&ISFtpClient::CreateClient)>));
    EXPECT_TRUE((std::is_same_v<ISFtpClient* (*)(), decltype(&ISFtpClient::GetInstance)>));
    EXPECT_TRUE((std::is_same_v<void (*)(ISFtpClient*), decltype(&ISFtpClient::ReleaseInstance)>));
}

TEST(InterfaceShape, CurlClient)
{
    EXPECT_TRUE((std::is_convertible_v<CurlSFtpClient*, ISFtpClient*>));
    EXPECT_EQ(sizeof(void*), sizeof(CurlSFtpClient));
    EXPECT_EQ((Slots{2, 3, 4, 5, 6, 7}),
              (Slots{slotOf(&CurlSFtpClient::TestSConnect), slotOf(&CurlSFtpClient::Listsftpdir),
                     slotOf(&CurlSFtpClient::DownLoadSFtpFile), slotOf(&CurlSFtpClient::ReNameSFtpFile),
                     slotOf(&CurlSFtpClient::DelSFtpFile), slotOf(&CurlSFtpClient::UploadFileToSFtpServer)}));
}

TEST(InterfaceShape, Facade)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<SFtpClient>);
    EXPECT_FALSE(std::is_copy_constructible_v<SFtpClient>);
    EXPECT_FALSE(std::is_copy_assignable_v<SFtpClient>);
    EXPECT_FALSE(std::is_move_constructible_v<SFtpClient>);
    EXPECT_FALSE(std::is_move_assignable_v<SFtpClient>);
    // The table and the client.
    EXPECT_EQ(2 * sizeof(void*), sizeof(SFtpClient));
    using Operation = int (SFtpClient::*)(const SFtpRequest&, std::string&);
    const Operation list = &SFtpClient::Listsftpdir;
    const Operation download = &SFtpClient::DownLoadSFtpFile;
    const Operation rename = &SFtpClient::ReNameSFtpFile;
    const Operation erase = &SFtpClient::DelSFtpFile;
    const Operation upload = &SFtpClient::UploadFileToSFtpServer;
    EXPECT_EQ((Slots{2, 3, 4, 5, 6}),
              (Slots{slotOf(list), slotOf(download), slotOf(rename), slotOf(erase), slotOf(upload)}));
    bool (SFtpClient::*const check)(const SFtpRequest&) = &SFtpClient::CheckFileSizeBeforeDownload;
    EXPECT_EQ(kNotVirtual, slotOf(check));
}

TEST(InterfaceShape, Request)
{
    const SFtpRequest request;
    EXPECT_FALSE(std::is_polymorphic_v<SFtpRequest>);
    constexpr std::ptrdiff_t kText = sizeof(std::string);
    EXPECT_EQ((Slots{0, kText, 2 * kText, 3 * kText, 4 * kText, 5 * kText, 6 * kText}),
              (Slots{offsetIn(request, request.remotePath), offsetIn(request, request.remoteFileName),
                     offsetIn(request, request.localPath), offsetIn(request, request.userName),
                     offsetIn(request, request.password), offsetIn(request, request.caCert),
                     offsetIn(request, request.port)}));
    EXPECT_EQ(6 * sizeof(std::string) + sizeof(void*), sizeof(SFtpRequest));
    EXPECT_TRUE((std::is_same_v<uint32_t, decltype(SFtpRequest::port)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(SFtpRequest::remotePath)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(SFtpRequest::remoteFileName)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(SFtpRequest::localPath)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(SFtpRequest::userName)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(SFtpRequest::password)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(SFtpRequest::caCert)>));
}

TEST(InterfaceShape, RequestStartsEmpty)
{
    const SFtpRequest request;
    EXPECT_EQ("", request.remotePath + request.remoteFileName + request.localPath + request.userName +
                      request.password + request.caCert);
    EXPECT_EQ(0U, request.port);
}

TEST(InterfaceShape, TransferFields)
{
    const CurlSFtpResponse transfer;
    EXPECT_TRUE((std::is_convertible_v<CurlSFtpResponse*, ISFtpResponse*>));
    EXPECT_FALSE(std::is_copy_constructible_v<CurlSFtpResponse>);
    EXPECT_FALSE(std::is_copy_assignable_v<CurlSFtpResponse>);
    EXPECT_EQ(kIs64 ? (Slots{8, 16, 48, 56, 88, 136, 144}) : (Slots{4, 8, 32, 36, 60, 84, 88}),
              (Slots{offsetIn(transfer, transfer.statusCode), offsetIn(transfer, transfer.statusText),
                     offsetIn(transfer, transfer.m_ErrorCode), offsetIn(transfer, transfer.recvData),
                     offsetIn(transfer, transfer.headers), offsetIn(transfer, transfer.curlHandle),
                     offsetIn(transfer, transfer.cert)}));
    EXPECT_EQ(kIs64 ? 176U : 112U, sizeof(CurlSFtpResponse));
    EXPECT_TRUE((std::is_same_v<uint32_t, decltype(CurlSFtpResponse::statusCode)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(CurlSFtpResponse::statusText)>));
    EXPECT_TRUE((std::is_same_v<int, decltype(CurlSFtpResponse::m_ErrorCode)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(CurlSFtpResponse::recvData)>));
    EXPECT_TRUE((std::is_same_v<std::map<std::string, std::set<std::string>>, decltype(CurlSFtpResponse::headers)>));
    EXPECT_TRUE((std::is_same_v<CURL*, decltype(CurlSFtpResponse::curlHandle)>));
    EXPECT_TRUE((std::is_same_v<std::string, decltype(CurlSFtpResponse::cert)>));
}

TEST(InterfaceShape, TransferFunctions)
{
    EXPECT_EQ((Slots{2, 3}), (Slots{slotOf(&CurlSFtpResponse::GetErrCode), slotOf(&CurlSFtpResponse::GetErrString)}));
    using Operation = bool (CurlSFtpResponse::*)(const SFtpRequest&, uint32_t);
    for (const Operation operation :
         {Operation(&CurlSFtpResponse::DownLoadSFtpFile), Operation(&CurlSFtpResponse::ReNameSFtpFile),
          Operation(&CurlSFtpResponse::DelSFtpFile), Operation(&CurlSFtpResponse::Listsftpdir),
          Operation(&CurlSFtpResponse::UploadFileToSFtpServer)}) {
        EXPECT_EQ(kNotVirtual, slotOf(operation));
    }
    using Taker = void (CurlSFtpResponse::*)(const std::string&);
    for (const Taker taker : {Taker(&CurlSFtpResponse::RecieveData), Taker(&CurlSFtpResponse::RecieveHeader),
                              Taker(&CurlSFtpResponse::ParseStatusLine)}) {
        EXPECT_EQ(kNotVirtual, slotOf(taker));
    }
    SecuritySS_RC (CurlSFtpResponse::*const setCert)(const std::string&) = &CurlSFtpResponse::SetCert;
    EXPECT_EQ(kNotVirtual, slotOf(setCert));
    using Callback = size_t (*)(void*, size_t, size_t, void*);
    EXPECT_TRUE((std::is_same_v<Callback, decltype(&CurlSFtpResponse::GetDataCallback)>));
    EXPECT_TRUE((std::is_same_v<Callback, decltype(&CurlSFtpResponse::GetHeaderCallback)>));
}

TEST(InterfaceShape, SecurityResults)
{
    EXPECT_EQ(0, SECURITYSS_SUCCESS);
    EXPECT_EQ(3, SECURITYSS_FAILURE);
}

} // namespace
