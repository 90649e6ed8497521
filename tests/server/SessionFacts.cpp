// The commands of a session that tell or change what is known about a file beside its bytes.
#include "Session.h"

#include <boost/algorithm/hex.hpp>
#include <boost/crc.hpp>
#include <openssl/evp.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>

namespace testserver {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// In capitals, as some servers write it.
std::string digest(const fs::path& path, const EVP_MD* algorithm)
{
    const std::string bytes = contentOf(path);
    std::string value(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    EVP_Digest(bytes.data(), bytes.size(), reinterpret_cast<unsigned char*>(value.data()), &size, algorithm, nullptr);
    value.resize(size);
    return boost::algorithm::hex(value);
}

// Without leading zeros.
std::string crc32(const fs::path& path)
{
    const std::string bytes = contentOf(path);
    boost::crc_32_type sum;
    sum.process_bytes(bytes.data(), bytes.size());
    std::ostringstream text;
    text << std::hex << sum.checksum();
    return text.str();
}

// "YYYYMMDDhhmmss".
std::string modified(const fs::path& path)
{
    struct stat status = {};
    std::tm parts = {};
    std::array<char, 16> text = {};
    if (::stat(path.c_str(), &status) != 0 || gmtime_r(&status.st_mtim.tv_sec, &parts) == nullptr) {
        return "19700101000000";
    }
    return {text.data(), std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &parts)};
}

bool setModified(const fs::path& path, const std::string& digits)
{
    std::tm parts = {};
    if (strptime(digits.c_str(), "%Y%m%d%H%M%S", &parts) == nullptr) {
        return false;
    }
    const std::array<timespec, 2> times = {{{0, UTIME_OMIT}, {timegm(&parts), 0}}};
    return ::utimensat(AT_FDCWD, path.c_str(), times.data(), 0) == 0;
}

} // namespace

// "MFMT YYYYMMDDhhmmss NAME".
void Session::setTime(const std::string& argument)
{
    const std::size_t blank = argument.find(' ');
    const std::string path = absolute(argument.substr(blank + 1));
    const bool isTime = blank == 14 && argument.find_first_not_of("0123456789") == blank;
    if (!isTime || !m_shared.storage.isFile(path)) {
        reply(isTime ? "550 no such file" : "501 a time and a name, please");
        return;
    }
    if (m_shared.config.timesOfDisk) {
        const auto real = m_shared.storage.real(path);
        if (!real || !setModified(*real, argument.substr(0, blank))) {
            reply("550 cannot be changed");
            return;
        }
    } else {
        m_shared.times.set(path, argument.substr(0, blank));
    }
    reply("213 Modify=" + argument.substr(0, blank) + "; " + argument.substr(blank + 1));
}

std::string Session::timeOf(const std::string& path) const
{
    const auto real = m_shared.storage.real(path);
    return m_shared.config.timesOfDisk && real ? modified(*real) : m_shared.times.of(path);
}

bool Session::offers(const std::string& command) const
{
    const auto& offered = m_shared.config.checksums;
    return std::find(offered.begin(), offered.end(), command) != offered.end();
}

std::string Session::features() const
{
    std::string lines = "211-features\r\n AUTH TLS\r\n EPSV\r\n MDTM\r\n MFMT\r\n MLST type*;size*;modify*;\r\n "
                        "PBSZ\r\n PROT\r\n REST STREAM\r\n SIZE\r\n";
    for (const std::string& each : m_shared.config.checksums) {
        lines += " " + each + (each == "HASH" ? (m_hashIsSha256 ? " MD5;SHA-256*" : " MD5*;SHA-256") : "") + "\r\n";
    }
    return lines + "211 end";
}

void Session::options(const std::string& argument)
{
    m_hashIsSha256 = m_hashIsSha256 || argument == "HASH SHA-256";
    reply("200 ok");
}

void Session::checksum(const std::string& command, const std::string& argument)
{
    const std::string path = absolute(argument);
    const auto real = m_shared.storage.real(path);
    if (!real || !m_shared.storage.isFile(path)) {
        reply("550 no such file");
    } else if (command == "XCRC") {
        reply("250 " + crc32(*real));
    } else if (command == "XSHA256") {
        reply("250 " + digest(*real, EVP_sha256()));
    } else {
        const std::string size = std::to_string(m_shared.storage.size(path));
        reply("213 " +
              (m_hashIsSha256 ? "SHA-256 0-" + size + " " + digest(*real, EVP_sha256())
                              : "MD5 0-" + size + " " + digest(*real, EVP_md5())) +
              " " + argument);
    }
}

void Session::tellFacts(const std::string& argument)
{
    const std::string path = absolute(argument);
    if (!m_shared.storage.isFile(path) && !m_shared.storage.isDirectory(path)) {
        reply("550 no such file");
        return;
    }
    reply("250-facts\r\n " + facts(path, "") + path + "\r\n250 end");
}

std::string Session::facts(const std::string& directory, const std::string& name) const
{
    const std::string path = Storage::absolute(directory, name);
    const bool isDirectory = m_shared.storage.isDirectory(path);
    if (m_shared.config.timesOfDisk && m_shared.storage.isLink(path)) {
        return "type=OS.unix=symlink; " + name;
    }
    return std::string(isDirectory ? "type=dir;"
                                   : "type=file;size=" + std::to_string(m_shared.storage.size(path)) + ";") +
           "modify=" + timeOf(path) + "; " + name;
}

} // namespace testserver
