#include "harness/Served.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

Served::Served()
{
    std::string pattern = testing::TempDir() + "sftpclient-served-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder can be made in " + testing::TempDir());
    }
    m_folder = pattern;
    std::filesystem::create_directory(served(""));
    std::filesystem::create_directory(local(""));
    writeFile(m_folder + "/ca.pem", m_authority.certificatePem());
    config.root = served("");
    config.user = "backup";
    config.password = "p@ss w%rd/7";
    config.certificate = m_authority.issue();
}

Served::~Served()
{
    m_server.reset();
    std::filesystem::remove_all(m_folder);
}

void Served::serve(const std::vector<std::string>& faults)
{
    config.faults.clear();
    for (const std::string& fault : faults) {
        config.faults.push_back(testserver::parseFault(fault));
    }
    m_server = std::make_unique<testserver::FtpServer>(config);
}

std::string Served::url(const std::string& path) const
{
    std::string text = plainUrl(path);
    return text.insert(text.find("://") + 3, "backup@");
}

std::string Served::plainUrl(const std::string& path) const
{
    const bool implicit = config.tls == testserver::TlsMode::Implicit;
    return (implicit ? "ftps://localhost:" : "ftp://localhost:") + std::to_string(m_server->port()) + path;
}

CommandResult Served::run(std::vector<std::string> form, Variables more) const
{
    const Variables usual = environment();
    more.insert(more.begin(), usual.begin(), usual.end());
    return runCommand(withCa(std::move(form)), more, local(""));
}

std::vector<std::string> Served::withCa(std::vector<std::string> form) const
{
    form.insert(form.end(), {"--ca", m_folder + "/ca.pem"});
    return form;
}

Variables Served::trust() const
{
    return {{"SFTPCLIENT_DEFAULT_TRUST", m_folder + "/ca.pem"}, {"LD_PRELOAD", SFTPCLIENT_TRUST_LIBRARY}};
}

Variables Served::environment() const
{
    Variables variables = trust();
    variables.emplace_back("SFTPCLIENT_PASSWORD", config.password);
    return variables;
}

void Served::writeFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

bool Served::exists(const std::string& path) { return std::filesystem::exists(path); }

std::string lastLine(const std::string& text)
{
    const std::string::size_type end = text.find_last_not_of('\n') + 1;
    const std::string::size_type begin = text.rfind('\n', end == 0 ? 0 : end - 1);
    return text.substr(begin == std::string::npos ? 0 : begin + 1, end - (begin == std::string::npos ? 0 : begin + 1));
}
