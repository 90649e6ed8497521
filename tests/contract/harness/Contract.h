#ifndef CONTRACT_HARNESS_CONTRACT_H
#define CONTRACT_HARNESS_CONTRACT_H

#include "harness/Journal.h"
#include "harness/Memory.h"
#include "harness/RecordedFiles.h"
#include "harness/RecordedOpenSsl.h"
#include "harness/RecordingHost.h"
#include "harness/ScriptedCurl.h"

#include "transfer/CurlSFtpResponse.h"

#include <SFtpRequest.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/// Lines of the journal made of several groups.
Lines operator+(Lines left, const Lines& right);

/// The base of every contract test: a fresh world, a request and a folder for local files.
class Contract : public testing::Test
{
protected:
    Contract();
    ~Contract() override;

    /// Runs a piece of the library and gives the journal of all that it did.
    Lines journalOf(const std::function<void()>& piece);

    /// Makes every transfer end with this code.
    static void performGives(CURLcode code);

    std::string path(const std::string& name) const { return m_folder + "/" + name; }
    static std::string contentOf(const std::string& path);
    static void writeFile(const std::string& path, const std::string& content);

    /// Gives the members of a transfer object that no operation may touch values of their own, and looks for them.
    static void keepMembers(CurlSFtpResponse& transfer);
    static void expectMembersKept(const CurlSFtpResponse& transfer);

    /// What the TLS step does to a handle when the request carries a certificate.
    static Lines tlsStep(int handle);

    static constexpr const char* kPassword = "correct horse battery";

    SFtpRequest request;

private:
    std::string m_folder;
};

#endif
