#ifndef CONTRACT_CONTRACT_H
#define CONTRACT_CONTRACT_H

#include "support/Codes.h"
#include "support/Journal.h"
#include "support/Lines.h"
#include "support/Memory.h"
#include "support/RecordedFiles.h"
#include "support/RecordedOpenSsl.h"
#include "support/RecordingHost.h"
#include "support/ScriptedCurl.h"
#include "support/TemporaryFolder.h"

#include "transfer/CurlSFtpResponse.h"

#include <SFtpRequest.h>

#include <cstdint>
#include <functional>
#include <string>

/// A record in the journal, with the identifier that the host's thread has.
std::string recordLine(int level, const std::string& function, const std::string& pieces);

/// What the TLS step does to a handle when the request carries a certificate.
Lines tlsStep();

/// As libcurl's options take a number: below zero where a long has 32 bits and the number uses all of them.
inline std::string asLong(std::uint32_t number) { return std::to_string(static_cast<long>(number)); }

/// Uses all 32 bits, and differs from the port in the URL.
constexpr std::uint32_t kRequestPort = 4000060021;
inline const std::string kPort = "1 PORT = " + asLong(kRequestPort);

/// Greater than every code of libcurl.
constexpr int kEndOfCodes = 128;

/// The base of every contract test: a fresh world, a request and a folder for local files.
class Contract : public testing::Test
{
protected:
    Contract();

    /// Runs a piece of the library and returns the journal of all that it did. Handles and buffers are numbered from 1.
    Lines journalOf(const std::function<void()>& piece);

    /// Expects the piece's journal to be empty.
    void expectNothingNoted(const std::function<void()>& piece) { EXPECT_TRUE(sameLines({}, journalOf(piece))); }

    /// Makes every transfer end with this code.
    static void performGives(int code);

    std::string path(const std::string& name) const { return m_folder.file(name); }

    /// Expects libcurl to get a copy of the request's URL.
    void expectUrlCopied() const;

    static constexpr const char* kPassword = "correct horse battery";

    SFtpRequest request;

private:
    const TemporaryFolder m_folder;
};

#endif
