#include "credentials/Netrc.h"

#include "base/Environment.h"
#include "base/InputFile.h"
#include "base/UsageError.h"
#include "base/WipedAtEnd.h"
#include "credentials/Password.h"

#include <strings.h>

#include <algorithm>
#include <string_view>

namespace {

constexpr std::size_t kLargestFile = 65536;
constexpr std::string_view kBlanks = " \t\r\n";

void readWhole(const std::string& file, std::string& text)
{
    const InputFile input(file);
    input.warnOfOtherReaders("the netrc file");
    const std::string reason = input.readWhole(kLargestFile, text);
    if (!reason.empty()) {
        throw UsageError("The netrc file " + file + " cannot be read (" + reason +
                         "): name one that can be with --netrc-file FILE.");
    }
}

/// The words of a netrc file one after the other, each as it stands there.
class Words
{
public:
    explicit Words(std::string_view text) : m_rest(text) {}

    /// The next word, or an empty one at the end.
    std::string_view next()
    {
        skipBlanks();
        const std::size_t size = !m_rest.empty() && m_rest.front() == '"' ? quotedSize() : plainSize();
        const std::string_view word = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        return word;
    }

    /// A macro ends with the first empty line.
    void skipMacro()
    {
        const std::size_t lf = m_rest.find("\n\n");
        const std::size_t crlf = m_rest.find("\n\r\n");
        m_rest.remove_prefix(std::min({lf, crlf, m_rest.size()}));
    }

private:
    void skipBlanks()
    {
        for (;;) {
            m_rest.remove_prefix(std::min(m_rest.find_first_not_of(kBlanks), m_rest.size()));
            if (m_rest.empty() || m_rest.front() != '#') {
                return;
            }
            m_rest.remove_prefix(std::min(m_rest.find('\n'), m_rest.size()));
        }
    }

    std::size_t plainSize() const { return std::min(m_rest.find_first_of(kBlanks), m_rest.size()); }

    std::size_t quotedSize() const
    {
        for (std::size_t i = 1; i < m_rest.size(); ++i) {
            if (m_rest[i] == '"') {
                return i + 1;
            }
            i += m_rest[i] == '\\' ? 1U : 0U;
        }
        return m_rest.size();
    }

    std::string_view m_rest;
};

bool isQuoted(std::string_view word) { return word.size() > 1 && word.front() == '"' && word.back() == '"'; }

// Into a text that has room for it.
void unquote(std::string_view word, std::string& text)
{
    text.clear();
    if (!isQuoted(word)) {
        text.append(word);
        return;
    }
    word = word.substr(1, word.size() - 2);
    for (std::size_t i = 0; i < word.size(); ++i) {
        i += word[i] == '\\' && i + 1 < word.size() ? 1U : 0U;
        text.append(1, word[i]);
    }
}

struct Entry
{
    bool fitsHost = false;
    std::string_view login;
    std::string_view password;
    bool hasPassword = false;
};

bool isHost(std::string_view word, const std::string& host)
{
    std::string name;
    unquote(word, name);
    return strcasecmp(name.c_str(), host.c_str()) == 0;
}

bool fits(const Entry& entry, const std::string& user)
{
    std::string login;
    unquote(entry.login, login);
    return entry.fitsHost && (user.empty() ? !login.empty() : login.empty() || login == user);
}

void take(const Entry& entry, std::string& user, std::string& password)
{
    if (user.empty()) {
        unquote(entry.login, user);
    }
    if (entry.password.size() > kLongestPassword) {
        throw UsageError("The password in the netrc file must not be longer than " + std::to_string(kLongestPassword) +
                         " bytes.");
    }
    password.reserve(kLongestPassword + 1);
    unquote(entry.password, password);
}

// The first entry that fits, or one that fits no host.
Entry findEntry(Words words, const std::string& file, const std::string& host, const std::string& user)
{
    Entry entry;
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        if (word == "machine" || word == "default") {
            if (fits(entry, user)) {
                return entry;
            }
            entry = Entry();
            entry.fitsHost = word == "default" || isHost(words.next(), host);
        } else if (word == "login") {
            entry.login = words.next();
        } else if (word == "password") {
            entry.password = words.next();
            entry.hasPassword = true;
        } else if (word == "account") {
            words.next();
        } else if (word == "macdef") {
            words.skipMacro();
        } else {
            // The word itself may be a password.
            throw UsageError("The netrc file " + file +
                             " holds a word that is none of machine, default, login, password, account and macdef in "
                             "their place: correct it; what holds a blank stands in double quotes.");
        }
    }
    return fits(entry, user) ? entry : Entry();
}

} // namespace

std::string usualNetrcFile()
{
    const std::string home = environmentText("HOME");
    if (home.empty()) {
        throw UsageError("HOME is not set, so there is no ~/.netrc: name the file with --netrc-file FILE.");
    }
    return home + "/.netrc";
}

bool readNetrc(const std::string& file, const std::string& host, std::string& user, std::string& password)
{
    std::string text;
    const WipedAtEnd wiped(text);
    readWhole(file, text);
    const Entry entry = findEntry(Words(text), file, host, user);
    if (!entry.fitsHost) {
        return false;
    }
    take(entry, user, password);
    return entry.hasPassword;
}
