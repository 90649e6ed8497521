#include "doctor/RoundTrip.h"

#include "doctor/LocalFile.h"
#include "doctor/NameList.h"

#include <SFtpClient.h>
#include <SFtpSession.h>

#include <fstream>
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

/// The library's operations on the one file.
class Trip
{
public:
    Trip(SFtpClient& client, SFtpSession* session, const Question& question, const std::string& name)
        : m_client(client), m_session(session), m_question(question), m_name(name)
    {
    }

    int put()
    {
        m_sent.write(contentFor(m_name));
        SFtpRequest request = of(m_name);
        request.localPath = m_sent.path();
        return m_client.UploadFileToSFtpServer(request, m_text);
    }
    int list()
    {
        SFtpRequest request = m_question.request;
        request.localPath = m_listing.path();
        return m_client.Listsftpdir(request, m_text);
    }
    int get()
    {
        SFtpRequest request = of(m_name);
        if (m_session != nullptr) {
            return getIntoMemory(request);
        }
        request.localPath = m_fetched.path();
        return m_client.DownLoadSFtpFile(request, m_text);
    }
    int rename()
    {
        SFtpRequest request = forCommand(m_name);
        request.localPath = renamed(m_name);
        return m_client.ReNameSFtpFile(request, m_text);
    }
    int remove(const std::string& name) { return m_client.DelSFtpFile(forCommand(name), m_text); }

    bool isListed() const
    {
        std::ifstream listing(m_listing.path(), std::ios::binary);
        return listingNames(listing, m_name);
    }
    bool isUnchanged() const { return m_fetched.content() == contentFor(m_name); }

private:
    // A session would make its own file beside the one in memory, where there is no folder.
    int getIntoMemory(const SFtpRequest& request)
    {
        std::ostringstream content;
        const int code = m_session->DownLoadTo(request, content, m_text);
        m_fetched.write(content.str());
        return code;
    }

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

    SFtpClient& m_client;
    SFtpSession* m_session;
    const Question& m_question;
    const std::string m_name;
    const LocalFile m_sent;
    const LocalFile m_listing;
    const LocalFile m_fetched;
    std::string m_text;
};

// A session's listing is left out: it needs a folder for the file that it writes.
void makeTrip(SFtpClient& client, SFtpSession* session, const Question& question, const std::string& name,
              const std::function<void(const StepNews&)>& tell)
{
    Trip trip(client, session, question, name);
    const auto begin = [&tell](Step step) { tell({step, false, 0, false}); };
    begin(Step::Put);
    const int put = trip.put();
    tell({Step::Put, true, put, true});
    if (session == nullptr) {
        begin(Step::List);
        const int list = trip.list();
        tell({Step::List, true, list, list == 0 && trip.isListed()});
    }
    if (put != 0) {
        return;
    }
    begin(Step::Get);
    const int get = trip.get();
    tell({Step::Get, true, get, get == 0 && trip.isUnchanged()});
    if (question.commandUrl.empty()) {
        return;
    }
    begin(Step::Rename);
    const int rename = trip.rename();
    tell({Step::Rename, true, rename, true});
    begin(Step::Remove);
    tell({Step::Remove, true, trip.remove(rename == 0 ? renamed(name) : name), true});
}

} // namespace

std::string renamed(const std::string& name) { return name + ".renamed"; }

std::string nameForSession(const std::string& name) { return name + "-session"; }

void makeRoundTrip(const Question& question, const std::string& name, bool withSession,
                   const std::function<void(const StepNews&)>& tell)
{
    SFtpClient client;
    makeTrip(client, nullptr, question, name, tell);
    if (withSession) {
        SessionOptions options;
        options.hostKeySha256 = question.hostKeySha256;
        SFtpSession session(options);
        makeTrip(session, &session, question, nameForSession(name), [&tell](StepNews news) {
            news.ofSession = true;
            tell(news);
        });
    }
}

void record(const StepNews& news, RoundTrip& roundTrip)
{
    roundTrip.unfinished = news.ended ? std::nullopt : std::optional<Step>(news.step);
    if (!news.ended) {
        return;
    }
    switch (news.step) {
    case Step::Put:
        roundTrip.put = news.code;
        break;
    case Step::List:
        roundTrip.list = news.code;
        roundTrip.listed = news.good;
        break;
    case Step::Get:
        roundTrip.get = news.code;
        roundTrip.unchanged = news.good;
        break;
    case Step::Rename:
        roundTrip.rename = news.code;
        break;
    case Step::Remove:
        roundTrip.remove = news.code;
        break;
    }
}

const char* operationOf(Step step)
{
    switch (step) {
    case Step::Put:
        return "upload";
    case Step::List:
        return "list";
    case Step::Get:
        return "download";
    case Step::Rename:
        return "rename";
    default:
        return "delete";
    }
}

} // namespace doctor
