// The commands of a session: each answers with its own fixed replies.
#include "Session.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <charconv>
#include <fstream>
#include <system_error>
#include <utility>

namespace testserver {

namespace fs = std::filesystem;

namespace {

// A quote in a path is doubled, otherwise the path would end there.
std::string quotedPath(const std::string& path)
{
    return '"' + boost::algorithm::replace_all_copy(path, "\"", "\"\"") + '"';
}

} // namespace

void Session::carryOut(const std::string& command, const std::string& argument)
{
    if (carryOutBeforeLogin(command, argument)) {
        return;
    }
    if (!m_loggedIn) {
        reply("530 log in first");
        return;
    }
    if (!carryOutSettings(command, argument) && !carryOutOnDirectories(command, argument) &&
        !carryOutOnFiles(command, argument)) {
        reply("500 unknown command");
    }
}

bool Session::carryOutBeforeLogin(const std::string& command, const std::string& argument)
{
    if (command == "AUTH") {
        auth(argument);
    } else if (command == "USER") {
        user(argument);
    } else if (command == "PASS") {
        pass(argument);
    } else if (command == "PBSZ") {
        reply("200 PBSZ=0");
    } else if (command == "PROT") {
        const std::string level = boost::algorithm::to_upper_copy(argument);
        m_protected = m_control.hasTls() && level == "P";
        reply(m_protected || level == "C" ? "200 protection set" : "536 protection refused");
    } else if (command == "FEAT") {
        reply(features());
    } else if (command == "SYST") {
        reply("215 UNIX Type: L8");
    } else if (command == "OPTS") {
        options(argument);
    } else if (command == "NOOP") {
        reply("200 ok");
    } else if (command == "QUIT") {
        reply("221 goodbye");
        leave();
    } else {
        return false;
    }
    return true;
}

bool Session::carryOutSettings(const std::string& command, const std::string& argument)
{
    if (command == "TYPE") {
        reply("200 type set");
    } else if (command == "EPSV") {
        passive(true);
    } else if (command == "PASV") {
        passive(false);
    } else if (command == "REST") {
        restart(argument);
    } else {
        return false;
    }
    return true;
}

void Session::restart(const std::string& argument)
{
    std::int64_t offset = 0;
    const char* const end = argument.data() + argument.size();
    const auto [behind, failed] = std::from_chars(argument.data(), end, offset);
    const bool number = failed == std::errc() && behind == end && offset >= 0;
    m_restart = number ? static_cast<std::uint64_t>(offset) : 0;
    reply(number ? "350 restart marked" : "501 no number");
}

bool Session::carryOutOnDirectories(const std::string& command, const std::string& argument)
{
    if (command == "PWD") {
        reply("257 " + quotedPath(m_cwd));
    } else if (command == "CWD") {
        changeDirectory(argument);
    } else if (command == "CDUP") {
        changeDirectory("..");
    } else if (command == "MKD") {
        makeDirectory(argument);
    } else if (command == "NLST") {
        list(argument, ListingForm::Names);
    } else if (command == "LIST") {
        list(argument, ListingForm::Details);
    } else if (command == "MLSD") {
        list(argument, ListingForm::Facts);
    } else if (command == "MLST") {
        tellFacts(argument);
    } else if (command == "RMD") {
        removeDirectory(argument);
    } else {
        return false;
    }
    return true;
}

bool Session::carryOutOnFiles(const std::string& command, const std::string& argument)
{
    if (command == "SIZE") {
        size(argument);
    } else if (command == "MDTM") {
        const std::string path = absolute(argument);
        reply(m_shared.storage.isFile(path) ? "213 " + timeOf(path) : "550 no such file");
    } else if (command == "RETR") {
        retrieve(argument);
    } else if (command == "STOR") {
        store(argument, false);
    } else if (command == "APPE") {
        store(argument, true);
    } else if (command == "RENAME") {
        rename(argument);
    } else if (command == "RNFR") {
        renameFrom(argument);
    } else if (command == "RNTO") {
        renameTo(argument);
    } else if (command == "MFMT") {
        setTime(argument);
    } else if (offers(command)) {
        checksum(command, argument);
    } else if (command == "RM" || command == "DELE") {
        remove(argument);
    } else {
        return false;
    }
    return true;
}

void Session::auth(const std::string& argument)
{
    const std::string mechanism = boost::algorithm::to_upper_copy(argument);
    if (m_shared.config.tls == TlsMode::Plain) {
        reply("502 no TLS here");
    } else if (m_control.hasTls()) {
        reply("503 TLS is on");
    } else if (mechanism != "TLS" && mechanism != "SSL") {
        reply("504 unknown mechanism");
    } else {
        reply("234 TLS next");
        // Bytes pipelined in the clear after the command must not count as sent over TLS.
        if (m_leaving || m_control.hasUnread() || !startControlTls()) {
            leave();
        }
    }
}

void Session::user(const std::string& argument)
{
    if (m_shared.config.tlsRequiredAtLogin && !m_control.hasTls()) {
        reply("530 TLS first");
        return;
    }
    m_user = argument;
    m_loggedIn = false;
    reply("331 password please");
}

void Session::pass(const std::string& argument)
{
    if (m_shared.config.tlsRequiredAtLogin && !m_control.hasTls()) {
        reply("530 TLS first");
        return;
    }
    m_loggedIn = m_user == m_shared.config.user && argument == m_shared.config.password;
    reply(m_loggedIn ? "230 logged in" : "530 login incorrect");
}

// The port changes from run to run, so the transcript omits it.
void Session::passive(bool extended)
{
    const ServerConfig& config = m_shared.config;
    const bool isVersion4 = config.address.find(':') == std::string::npos;
    if (!extended && !isVersion4) {
        reply("425 use EPSV");
        return;
    }
    std::uint16_t port = m_data.listen(m_faults.next("LISTEN"));
    port = config.announcedPort ? config.announcedPort(port) : port;
    if (extended) {
        reply("229 Entering Extended Passive Mode (|||" + std::to_string(port) + "|)");
        m_transcript.back() = "< 229 Entering Extended Passive Mode (|||PORT|)";
    } else {
        const std::string address = config.announcedAddress.empty()
                                        ? boost::algorithm::replace_all_copy(config.address, ".", ",")
                                        : config.announcedAddress;
        const std::string text = "227 Entering Passive Mode (" + address + ",";
        reply(text + std::to_string(port / 256) + "," + std::to_string(port % 256) + ")");
        m_transcript.back() = "< " + text + "PORT)";
    }
}

void Session::size(const std::string& argument)
{
    const std::string path = absolute(argument);
    if (!m_shared.storage.isFile(path)) {
        reply("550 no such file");
        return;
    }
    reply("213 " + std::to_string(m_shared.storage.size(path)));
}

void Session::rename(const std::string& argument)
{
    const std::size_t blank = argument.find(' ');
    const bool twoNames = blank != std::string::npos && blank > 0 && blank + 1 < argument.size() &&
                          argument.find(' ', blank + 1) == std::string::npos;
    if (!twoNames) {
        reply("501 two names, please");
        return;
    }
    const std::string oldPath = absolute(argument.substr(0, blank));
    if (!m_shared.storage.isFile(oldPath)) {
        reply("550 no such file");
        return;
    }
    move(oldPath, absolute(argument.substr(blank + 1)));
}

void Session::renameFrom(const std::string& argument)
{
    const std::string path = absolute(argument);
    m_renamed = m_shared.storage.isFile(path) || m_shared.storage.isDirectory(path) ? path : "";
    reply(m_renamed.empty() ? "550 no such file" : "350 the new name, please");
}

void Session::renameTo(const std::string& argument)
{
    if (m_renamed.empty()) {
        reply("503 RNFR first");
        return;
    }
    move(std::exchange(m_renamed, {}), absolute(argument));
}

void Session::move(const std::string& oldPath, const std::string& newPath)
{
    const auto from = m_shared.storage.real(oldPath);
    const auto to = m_shared.storage.real(newPath);
    std::error_code failed;
    if (!from || !to || !fs::exists(*from, failed)) {
        reply("550 no such file");
        return;
    }
    fs::rename(*from, *to, failed);
    reply(failed ? "553 cannot be renamed" : "250 renamed");
}

void Session::remove(const std::string& argument)
{
    const std::string path = absolute(argument);
    const auto real = m_shared.storage.real(path);
    std::error_code failed;
    const bool removed = real && m_shared.storage.isFile(path) && fs::remove(*real, failed);
    reply(removed ? "250 removed" : "550 no such file");
}

void Session::changeDirectory(const std::string& argument)
{
    const std::string path = absolute(argument);
    if (!m_shared.storage.isDirectory(path)) {
        reply("550 no such directory");
        return;
    }
    m_cwd = path;
    reply("250 directory changed");
}

void Session::makeDirectory(const std::string& argument)
{
    const std::string path = absolute(argument);
    const auto real = m_shared.storage.real(path);
    std::error_code failed;
    const bool made = real && fs::create_directory(*real, failed);
    reply(made ? "257 " + quotedPath(path) + " made" : "550 cannot be made");
}

void Session::removeDirectory(const std::string& argument)
{
    const std::string path = absolute(argument);
    const auto real = m_shared.storage.real(path);
    std::error_code failed;
    const bool removed = real && m_shared.storage.isDirectory(path) && fs::remove(*real, failed);
    reply(removed ? "250 removed" : "550 cannot be removed");
}

std::string Session::details(const std::string& directory, const std::string& name) const
{
    const std::string path = Storage::absolute(directory, name);
    const bool isDirectory = m_shared.storage.isDirectory(path);
    const std::uint64_t bytes = isDirectory ? 0 : m_shared.storage.size(path);
    return std::string(isDirectory ? "drwxr-xr-x" : "-rw-r--r--") + " 1 backup backup " + std::to_string(bytes) +
           " Jan 01 00:00 " + name;
}

void Session::list(const std::string& argument, ListingForm form)
{
    const std::string path = absolute(argument);
    if (!m_shared.storage.isDirectory(path)) {
        reply("550 no such directory");
        return;
    }
    std::string lines;
    for (const std::string& name : m_shared.storage.names(path)) {
        if (m_shared.config.hidesDotNames && name.front() == '.') {
            continue;
        }
        // The names alone come without a look at each file: there can be a hundred thousand.
        lines += (form == ListingForm::Names     ? name
                  : form == ListingForm::Details ? details(path, name)
                                                 : facts(path, name)) +
                 "\r\n";
    }
    for (const std::string& line : m_shared.config.listedToo) {
        lines += form == ListingForm::Facts ? line + "\r\n" : "";
    }
    reply("150 data follows");
    if (openData()) {
        closeData(m_data.send(lines), "sent");
    }
}

void Session::retrieve(const std::string& argument)
{
    const std::string path = absolute(argument);
    const auto real = m_shared.storage.real(path);
    if (!real || !m_shared.storage.isFile(path)) {
        m_restart = 0;
        reply("550 no such file");
        return;
    }
    reply("150 data follows");
    if (openData()) {
        closeData(m_data.sendFile(*real, m_restart), "sent");
    }
}

void Session::store(const std::string& argument, bool append)
{
    const std::string path = absolute(argument);
    const auto real = m_shared.storage.real(path);
    if (!real || !m_shared.storage.isWritable(path)) {
        m_restart = 0;
        reply("553 cannot be written");
        return;
    }
    // As with daemons: whoever has heard the 150 can delete it, and then it does not come back.
    std::ofstream content(*real, std::ios::binary | std::ios::app);
    reply("150 send the data");
    if (openData()) {
        if (!append) {
            std::error_code ignored;
            fs::resize_file(*real, 0, ignored);
        }
        const TransferEnd end = m_data.receiveFile(content, m_shared.config.strictUploadEnd);
        content.close(); // a test may wait for that while the reply is held back
        closeData(end, "received");
    }
}

} // namespace testserver
