// A server that repeats the password wherever it can: it is shown nowhere, and does not change the findings.
#include "support/PlantedPassword.h"
#include "doctor/Renderers.h"
#include "harness/Examined.h"

#include <filesystem>
#include <sstream>

namespace {

struct Plant
{
    const char* id;
    void (*make)(testserver::ServerConfig& config, const std::string& text);
    std::string predictions;
    const char* scheme = "ftp";
};

using testserver::Misbehaviour;

void add(testserver::ServerConfig& config, const std::string& command, Misbehaviour kind, const std::string& text)
{
    testserver::Fault fault;
    fault.command = command;
    fault.misbehaviour = kind;
    fault.text = text + "\r\n";
    config.faults.push_back(fault);
}

void refuse(testserver::ServerConfig& config, const std::string& command, const std::string& reply)
{
    add(config, command, Misbehaviour::Reply, reply);
}

// In a path, each quote is doubled.
std::string inQuotes(const std::string& path)
{
    std::string doubled;
    for (const char character : path) {
        doubled.append(character == '"' ? 2 : 1, character);
    }
    return '"' + doubled + '"';
}

void everywhere(testserver::ServerConfig& config, const std::string& text)
{
    for (const char* const command : {"GREETING", "AUTH", "USER", "PASS", "PBSZ", "PROT", "PWD", "TYPE", "EPSV", "SIZE",
                                      "NLST", "LIST", "DONE", "rename", "rm", "QUIT"}) {
        add(config, command, Misbehaviour::Append, text);
    }
}

const Plant kPlants[] = {
    {"EveryReply", everywhere, "works0 works0 works0 works0 works0 works0 "},
    {"EntryPath", [](auto& config, const std::string& text) { refuse(config, "PWD", "257 " + inQuotes("/" + text)); },
     "works0 works0 fails21 fails21 works0 works0 "},
    {"Greeting", [](auto& config, const std::string& text) { refuse(config, "GREETING", "530 " + text); },
     "fails-1 fails8 fails8 fails8 fails8 fails8 "},
    {"AUTH", [](auto& config, const std::string& text) { refuse(config, "AUTH", "502 " + text); },
     "fails64 works0 fails64 fails64 fails64 fails64 "},
    {"USER", [](auto& config, const std::string& text) { refuse(config, "USER", "530 " + text); },
     "fails-1 fails67 fails67 fails67 fails67 fails67 "},
    {"PASS", [](auto& config, const std::string& text) { refuse(config, "PASS", "530 " + text); },
     "fails-1 fails67 fails67 fails67 fails67 fails67 "},
    {"PROT", [](auto& config, const std::string& text) { refuse(config, "PROT", "536 " + text); },
     "fails64 works0 fails64 fails64 fails64 fails64 "},
    {"CWD", [](auto& config, const std::string& text) { refuse(config, "CWD", "550 " + text); },
     "fails-1 fails78 fails78 fails78 fails78 fails9 "},
    {"SIZE", [](auto& config, const std::string& text) { refuse(config, "SIZE", "502 " + text); },
     "fails-1 works0 works0 works0 works0 works0 "},
    {"Verbs",
     [](auto& config, const std::string& text) {
         refuse(config, "rename", "500 " + text);
         refuse(config, "rm", "250 " + text);
     },
     "works0 works0 fails21 unknown works0 works0 "},
    {"NoReply", [](auto& config, const std::string& text) { add(config, "GREETING", Misbehaviour::Last, text); },
     "fails-1 fails56 fails56 fails56 fails56 fails56 "},
    {"SshBanner",
     [](auto& config, const std::string& text) { add(config, "GREETING", Misbehaviour::Last, "SSH-2.0-" + text); },
     "fails-1 fails2 fails2 fails2 fails2 fails2 ", "sftp"},
};

std::string textOf(const std::vector<doctor::Prediction>& predictions)
{
    constexpr const char* kOutlooks[] = {"works", "fails", "unknown"};
    std::string text;
    for (const doctor::Prediction& each : predictions) {
        text += kOutlooks[static_cast<int>(each.outlook)] + (each.code ? std::to_string(*each.code) : "") + " ";
    }
    return text;
}

class PlantedPasswords : public Examined, public testing::WithParamInterface<PlantedPassword>
{
protected:
    PlantedPasswords()
    {
        config.password = GetParam().password;
        request.password = config.password;
        std::filesystem::create_directory(served("weekly"));
    }

    std::string shownBy(const doctor::Report& report) const
    {
        std::ostringstream table;
        renderTable(report, predict(report), true, table);
        std::ostringstream json;
        renderJson(report, predict(report), json);
        all = table.str() + json.str();
        return GetParam().shownIn(all, config.user);
    }

    mutable std::string all;
};

TEST_P(PlantedPasswords, AreShownNowhereAndChangeNothing)
{
    for (const Plant& each : kPlants) {
        config.faults.clear();
        each.make(config, GetParam().text(config.user));
        serve();
        askAbout(each.scheme + url("/weekly/").substr(3));
        question.clearLogin = true;
        const doctor::Report report = examine(question);
        EXPECT_EQ(each.predictions, textOf(predict(report))) << each.id;
        EXPECT_EQ("", shownBy(report)) << each.id << all;
        EXPECT_TRUE(holds("<<", all)) << each.id << " planted nothing that is shown: " << all;
    }
}

TEST_P(PlantedPasswords, AreHiddenInCertificates)
{
    constexpr std::size_t kLongestName = 64;
    for (const std::string& form : GetParam().forms(config.user)) {
        SCOPED_TRACE(form);
        ASSERT_LE(marked(form).size(), kLongestName);
        const testserver::CertificateAuthority named(marked(form));
        testserver::CertificateOptions options;
        options.commonName = marked(form);
        config.certificate = named.issue(options);
        serveAndAsk();
        const doctor::Report report = examine(question);
        EXPECT_EQ("", shownBy(report)) << all;
        EXPECT_EQ("the certificate is not trusted: unable to get local issuer certificate",
                  predict(report).back().reason);
        EXPECT_TRUE(holds("<<", all));
    }
}

INSTANTIATE_TEST_SUITE_P(Such, PlantedPasswords, testing::ValuesIn(everyPassword()),
                         [](const testing::TestParamInfo<PlantedPassword>& of) { return std::string(of.param.id); });

using PlantedElsewhere = Examined;

TEST_F(PlantedElsewhere, IsHiddenInASerialNumber)
{
    testserver::CertificateOptions options;
    options.serial = 0xcafe1234;
    config.certificate = authority.issue(options);
    config.password = request.password = "CAFE1234";
    serveAndAsk();
    EXPECT_TRUE(sameText("****", examine(question).tls.chain.front().serial.shown()));
}

} // namespace
