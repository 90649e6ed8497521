#include "doctor/RoundTrip.h"

#include "doctor/LocalFile.h"

#include <SFtpClient.h>

#include <algorithm>
#include <sstream>

namespace doctor {

namespace {

// Two TLS records and a bit.
constexpr std::size_t kBytes = 33333;

std::string contentFor(const std::string& name)
{
    std::string content;
    while (content.size() < kBytes) {
        content += name + "\r\n";
    }
    return content;
}

// Some servers put the directory before each name.
bool holds(const std::string& listing, const std::string& name)
{
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.substr(line.rfind('/') + 1) == name) {
            return true;
        }
    }
    return false;
}

/// The library's operations on the one file.
class Trip
{
public:
    Trip(const Question& question, const std::string& name) : m_question(question), m_name(name) {}

    StepResult put()
    {
        m_sent.write(contentFor(m_name));
        SFtpRequest request = of(m_name);
        request.localPath = m_sent.path();
        return {Step::Put, m_client.UploadFileToSFtpServer(request, m_text), true};
    }
    StepResult list()
    {
        SFtpRequest request = m_question.request;
        request.localPath = m_listing.path();
        const int code = m_client.Listsftpdir(request, m_text);
        return {Step::List, code, code == 0 && holds(m_listing.content(), m_name)};
    }
    StepResult get()
    {
        SFtpRequest request = of(m_name);
        request.localPath = m_fetched.path();
        const int code = m_client.DownLoadSFtpFile(request, m_text);
        return {Step::Get, code, code == 0 && m_fetched.content() == contentFor(m_name)};
    }
    StepResult rename()
    {
        SFtpRequest request = forCommand(m_name);
        request.localPath = renamed(m_name);
        return {Step::Rename, m_client.ReNameSFtpFile(request, m_text), true};
    }
    StepResult remove(const std::string& name)
    {
        return {Step::Remove, m_client.DelSFtpFile(forCommand(name), m_text), true};
    }

private:
    SFtpRequest of(const std::string& file) const
    {
        SFtpRequest request = m_question.request;
        request.remotePath += (request.remotePath.back() == '/' ? "" : "/") + file;
        return request;
    }
    SFtpRequest forCommand(const std::string& file) const
    {
        SFtpRequest request = m_question.request;
        request.remotePath = m_question.commandUrl;
        request.remoteFileName = file;
        return request;
    }

    const Question& m_question;
    const std::string& m_name;
    const LocalFile m_sent;
    const LocalFile m_listing;
    const LocalFile m_fetched;
    SFtpClient m_client;
    std::string m_text;
};

} // namespace

std::string renamed(const std::string& name) { return name + ".renamed"; }

void makeRoundTrip(const Question& question, const std::string& name,
                   const std::function<void(const StepResult&)>& tell)
{
    Trip trip(question, name);
    const StepResult put = trip.put();
    tell(put);
    tell(trip.list());
    if (put.code != 0) {
        return;
    }
    tell(trip.get());
    if (question.commandUrl.empty()) {
        return;
    }
    const StepResult rename = trip.rename();
    tell(rename);
    tell(trip.remove(rename.code == 0 ? renamed(name) : name));
}

void record(const StepResult& result, RoundTrip& roundTrip)
{
    switch (result.step) {
    case Step::Put:
        roundTrip.put = result.code;
        break;
    case Step::List:
        roundTrip.list = result.code;
        roundTrip.listed = result.good;
        break;
    case Step::Get:
        roundTrip.get = result.code;
        roundTrip.unchanged = result.good;
        break;
    case Step::Rename:
        roundTrip.rename = result.code;
        break;
    case Step::Remove:
        roundTrip.remove = result.code;
        break;
    }
}

} // namespace doctor
