#ifndef THREADS_HARNESS_VISITOR_H
#define THREADS_HARNESS_VISITOR_H

#include "harness/Crowd.h"

/// The operations of one thread, on files that no other thread uses. Each call has a request identifier of its
/// own; what is wrong with its result, its records or the files is kept.
class Visitor
{
public:
    static constexpr unsigned kOperations = 6;

    /// The places of a visitor's files: a URL, and a folder on each side.
    struct Place
    {
        std::string url;
        std::string served;
        std::string local;
    };

    /// Makes the folders and files. `login` holds the credentials, the port and the certificate.
    Visitor(unsigned number, const SFtpRequest& login, const Place& place);

    /// Carries out one operation; they are counted from 0 and do not depend on each other.
    void perform(unsigned operation, SFtpClient& facade);

    const Lines& wrong() const { return m_wrong; }

    /// What all six operations together print on standard output.
    Lines output() const;

private:
    void download(SFtpClient& facade);
    void upload(SFtpClient& facade);
    void rename(SFtpClient& facade);
    void remove(SFtpClient& facade);
    void list(SFtpClient& facade);
    void test(SFtpClient& facade);

    SFtpRequest aimedAt(const std::string& path) const;
    std::string record(const std::string& text) const;
    void judge(const std::string& operation, int result, const std::string& errorText, const Lines& records);
    void add(const Lines& wrong);
    std::string name(const std::string& text) const { return text + "-" + std::to_string(m_number); }

    unsigned m_number;
    SFtpRequest m_login;
    Place m_place;
    std::string m_content;
    unsigned long m_identifier = 0;
    Lines m_wrong;
};

#endif
