// A server that repeats the password wherever it can: no operation shows it, or ends differently because of it.
#include "support/PlantedPassword.h"
#include "harness/Served.h"

#include <future>

namespace {

struct Attempt
{
    Words form;
    int status;
};

class PlantedPasswords : public Served, public testing::WithParamInterface<PlantedPassword>
{
protected:
    PlantedPasswords()
    {
        asHost = true;
        config.password = GetParam().password;
        writeFile(local("sent"), "contents");
        writeFile(served("kept"), "contents");
        writeFile(served("old"), "contents");
        writeFile(served("gone"), "contents");
    }

    /// A fault that sends every form of the password.
    std::string planted(const std::string& fault) const { return fault + asFault(GetParam().text(config.user)); }

    void servePlanted(const std::vector<std::string>& faults)
    {
        std::vector<std::string> all;
        for (const std::string& each : faults) {
            all.push_back(planted(each));
        }
        serve(all);
    }

    /// All at once, each with all its output options.
    void expectSecrecy(const std::vector<Attempt>& attempts, const Variables& more = {}) const
    {
        std::vector<std::future<ProgramResult>> results;
        for (const Attempt& each : attempts) {
            Words form = each.form;
            form.insert(form.end(), {"--trace", "--json"});
            results.push_back(std::async(std::launch::async, [this, form, more] { return run(form, more); }));
        }
        for (std::size_t i = 0; i < attempts.size(); ++i) {
            const ProgramResult result = results[i].get();
            const std::string all = result.out + result.err;
            EXPECT_EQ(attempts[i].status, result.status) << attempts[i].form[0] << all;
            EXPECT_EQ("", GetParam().shownIn(all, config.user)) << attempts[i].form[0] << all;
            EXPECT_TRUE(holds("<<", all)) << attempts[i].form[0] << " was told nothing: " << all;
        }
    }
};

} // namespace

TEST_P(PlantedPasswords, AreNotShownOnSuccess)
{
    std::vector<std::string> faults;
    for (const char* const command : {"GREETING", "AUTH", "USER", "PASS", "PBSZ", "PROT", "PWD", "CWD", "TYPE", "EPSV",
                                      "NLST", "LIST", "RETR", "STOR", "DONE", "rename", "rm", "QUIT"}) {
        faults.push_back(std::string(command) + "=append:");
    }
    servePlanted(faults);
    expectSecrecy({{{"test", url()}, 0},
                   {{"put", "sent", url()}, 0},
                   {{"ls", url()}, 0},
                   {{"get", url("/kept"), "got"}, 0},
                   {{"mv", url(), "old", "new"}, 0},
                   {{"rm", url(), "gone"}, 0}});
}

TEST_P(PlantedPasswords, AreNotShownByASession)
{
    asHost = false;
    std::vector<std::string> faults;
    for (const char* const command :
         {"GREETING", "AUTH", "USER", "PASS", "PBSZ", "PROT", "PWD", "TYPE", "EPSV", "NLST", "MLST", "MKD", "QUIT"}) {
        faults.push_back(std::string(command) + "=append:");
    }
    for (const char* const refused :
         {"STOR=reply:553 ", "RETR=reply:550 ", "CWD=reply:550 ", "RNFR=reply:550 ", "DELE=reply:550 "}) {
        faults.emplace_back(refused);
    }
    servePlanted(faults);
    expectSecrecy({{{"test", url()}, 0},
                   {{"put", "sent", url()}, 25},
                   {{"ls", url()}, 0},
                   {{"ls", url("/no/")}, 78},
                   {{"get", url("/kept"), "got"}, 78},
                   {{"stat", url("/kept")}, 0},
                   {{"mkdir", url("/made")}, 0},
                   {{"mv", url(), "old", "new"}, 21},
                   {{"rm", url(), "gone"}, 21}});
}

TEST_P(PlantedPasswords, AreNotShownWhenTheServerRefuses)
{
    servePlanted({"STOR=reply:553 ", "NLST=reply:550 ", "SIZE=reply:550 ", "rename=reply:500 ", "rm=reply:550 "});
    expectSecrecy({{{"put", "sent", url()}, 25},
                   {{"ls", url()}, 19},
                   {{"get", url("/kept"), "got"}, 78},
                   {{"mv", url(), "old", "new"}, 21},
                   {{"rm", url(), "gone"}, 21}});
}

TEST_P(PlantedPasswords, AreNotShownWhenTheLoginIsRefused)
{
    servePlanted({"PASS=reply:530 "});
    expectSecrecy({{{"test", url()}, 67}, {{"put", "sent", url()}, 67}, {{"get", url("/kept"), "got"}, 255}});
}

TEST_P(PlantedPasswords, AreNotShownFromACertificate)
{
    const testserver::CertificateAuthority own;
    testserver::CertificateOptions options;
    options.dnsNames = {};
    options.addresses = {};
    options.commonName = marked(GetParam().password);
    config.certificate = own.issue(options);
    config.tls = testserver::TlsMode::Implicit;
    writeFile(local("own.pem"), own.certificatePem());
    serve();
    expectSecrecy({{{"put", "sent", url()}, 60}, {{"test", url()}, 0}, {{"get", url("/kept"), "got"}, 255}},
                  {{"SFTPCLIENT_DEFAULT_TRUST", local("own.pem")}});
    asHost = false;
    writeFile(ca(), own.certificatePem()); // trusted, but for another host
    expectSecrecy({{{"put", "sent", url()}, 60}, {{"test", url()}, 60}, {{"get", url("/kept"), "got"}, 60}});
}

INSTANTIATE_TEST_SUITE_P(Such, PlantedPasswords, testing::ValuesIn(everyPassword()),
                         [](const testing::TestParamInfo<PlantedPassword>& of) { return std::string(of.param.id); });
