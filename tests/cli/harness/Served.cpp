#include "harness/Served.h"

#include "support/TemporaryFolder.h"

Served::Served()
{
    writeFile(ca(), authority.certificatePem());
    config.password = "p@ss w%rd/7";
}

void Served::serve(const std::vector<std::string>& faults)
{
    config.faults.clear();
    for (const std::string& fault : faults) {
        misbehave(fault);
    }
    ServerFixture::serve();
}

std::string Served::url(const std::string& path) const
{
    std::string text = plainUrl(path);
    return text.insert(text.find("://") + 3, "backup@");
}

ProgramResult Served::run(Words form, Variables more) const { return runProgram(setupOf(std::move(form), more)); }

ProcessSetup Served::setupOf(Words form, const Variables& more) const
{
    ProcessSetup setup = commandSetup(withCa(std::move(form)), environment(), local(""));
    if (asHost) {
        setup.words.emplace_back("--as-host");
    }
    setup.environment.insert(setup.environment.end(), more.begin(), more.end());
    return setup;
}

Words Served::withCa(Words form) const
{
    form.insert(form.end(), {"--ca", ca()});
    return form;
}

Variables Served::trust() const
{
    return {{"SFTPCLIENT_DEFAULT_TRUST", ca()}, {"LD_PRELOAD", SFTPCLIENT_TRUST_LIBRARY}};
}

Variables Served::environment() const
{
    Variables variables = trust();
    variables.emplace_back("SFTPCLIENT_PASSWORD", config.password);
    return variables;
}
