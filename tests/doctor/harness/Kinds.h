#ifndef DOCTOR_HARNESS_KINDS_H
#define DOCTOR_HARNESS_KINDS_H

#include "harness/Examined.h"

#include <iosfwd>
#include <string>
#include <vector>

/// What a kind of server can be made of.
struct World
{
    testserver::ServerConfig& config;
    SFtpRequest& request;
    testserver::CertificateAuthority& authority;
    std::string directory = "/";
    std::string scheme = {};          ///< of the URL, if it does not match the server
    std::string host = "localhost";   ///< in the URL
    std::string directoryOnDisk = {}; ///< where that differs from `directory`
    std::string machineTrusts = {};   ///< PEM; empty: the machine's real store
    bool listening = true;
};

/// A kind of server, and the doctor's prediction on it. The outlooks keep the comparison with the truth from being
/// one of two mistakes that agree.
struct Kind
{
    std::string id;
    std::string outlooks; ///< download, upload, rename, delete, list, test
    void (*make)(World&);
    std::string ofSession = "WWWWWW";
};

/// For the tests' names in ctest.
void PrintTo(const Kind& kind, std::ostream* stream);
std::string idOf(const testing::TestParamInfo<Kind>& of);

const std::vector<Kind>& kinds();

/// Those of the kinds that have these names.
std::vector<Kind> kindsNamed(const std::vector<std::string>& ids);

/// The base of the tests that run against a server of each kind. The question allows a login in the clear.
class OfAKind : public Examined, public testing::WithParamInterface<Kind>
{
protected:
    OfAKind();

    /// Puts a file into the directory that is asked about, if there is one.
    void keep(const std::string& name, const std::string& content) const;

private:
    std::string m_folder;
};

#endif
