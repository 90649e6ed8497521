#include "harness/GoodServer.h"

#include "harness/Script.h"

#include <map>

namespace {

std::string wordOf(const std::string& command) { return command.substr(0, command.find_first_of(" \r")); }

bool isTransfer(const std::string& command)
{
    const std::string word = wordOf(command);
    return word == "RETR" || word == "STOR" || word == "APPE" || word == "LIST" || word == "NLST" || word == "MLSD";
}

std::string replyTo(const std::string& command, std::size_t size)
{
    static const std::map<std::string, std::string> replies = {
        {"", "220 ready"},
        {"AUTH", "502 no TLS"},
        {"CWD", "250 there"},
        {"DELE", "250 deleted"},
        {"EPSV", "229 here (|||@|)"},
        {"FEAT", "211-Features:\r\n MLST type*;size*;modify*;\r\n HASH SHA-256*;SHA-1\r\n MFMT\r\n211 End"},
        {"HASH", "213 SHA-256 0-4 9f86d081884c7d659a2feaa0c55ad015a3bf4f1b2b0b822cd15d6c15b0f00a08 a.bak"},
        {"MDTM", "213 20260102030405"},
        {"MFMT", "213 Modify=20260102030405; a.bak"},
        {"MKD", "257 made"},
        {"MLST", "250-Listing\r\n type=file;size=5;modify=20260102030405; a.bak\r\n250 End"},
        {"PASS", "230 in"},
        {"PASV", "227 here (127,0,0,1,#)"},
        {"PWD", "257 \"/\""},
        {"QUIT", "221 bye"},
        {"REST", "350 from there"},
        {"RMD", "250 removed"},
        {"RNFR", "350 to?"},
        {"RNTO", "250 renamed"},
        {"USER", "331 password?"},
    };
    if (isTransfer(command)) {
        return "150 here";
    }
    if (wordOf(command) == "SIZE") {
        return "213 " + std::to_string(size);
    }
    const auto known = replies.find(wordOf(command));
    return known == replies.end() ? "200 done" : known->second;
}

} // namespace

void GoodServer::hear(const std::string& bytes)
{
    m_unended += bytes;
    for (std::string::size_type end = 0; (end = m_unended.find('\n')) != std::string::npos;) {
        m_commands.push_back(m_unended.substr(0, end));
        m_unended.erase(0, end + 1);
    }
}

std::string GoodServer::reply(std::size_t size)
{
    std::string reply;
    if (!m_commands.empty()) {
        reply = replyTo(m_commands.front(), size);
    } else if (m_isTransferring) {
        reply = "226 done";
    } else {
        return "";
    }
    sent(reply);
    return withPorts(reply) + "\r\n";
}

void GoodServer::sent(const std::string& reply)
{
    if (m_commands.empty()) {
        m_isTransferring = false;
        return;
    }
    m_isTransferring = isTransfer(m_commands.front()) && reply.compare(0, 1, "1") == 0;
    m_commands.pop_front();
}
