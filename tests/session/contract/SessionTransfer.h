#ifndef SESSION_CONTRACT_SESSIONTRANSFER_H
#define SESSION_CONTRACT_SESSIONTRANSFER_H

#include "OperationCalls.h"
#include "SessionContract.h"

#include <functional>
#include <map>
#include <string>

/// The base of the tests of transfers in which the server or the caller's own functions do not go along.
class SessionTransfer : public SessionContract
{
protected:
    // What of a journal tells where a transfer went and what came behind it.
    static Lines way(const Lines& lines)
    {
        Lines told;
        for (const std::string& line : lines) {
            for (const char* const option : {"1 URL = ", "1 PREQUOTE = ", "1 POSTQUOTE = ", "1 FTP_FILEMETHOD = 1",
                                             "2 URL = ", "2 PREQUOTE = ", "2 POSTQUOTE = ", "1 FTP_CREATE_MISSING_DIRS",
                                             "handle ", "1 CUSTOMREQUEST", "1 getinfo"}) {
                if (line.rfind(option, 0) == 0) {
                    told.push_back(line);
                }
            }
        }
        return told;
    }

    Lines wayOf(const std::string& function, int expected = CURLE_OK)
    {
        return way(journalOfCall(operationCall(function).run, expected));
    }

    /// Ends transfers, counted from 1, with these codes once they have been served.
    void endTransfers(const std::map<unsigned, CURLcode>& codes)
    {
        transfers = 0;
        m_ends = codes;
        scripted::curl().perform = [this](scripted::Handle& handle) {
            const CURLcode code = m_served(handle);
            const auto own = m_ends.find(++transfers);
            return own == m_ends.end() ? code : own->second;
        };
    }
    unsigned transfers = 0;

    int upload(SFtpSession& session, std::int64_t size, const DataSource& source)
    {
        return session.UploadFrom(request, source, errorText, size);
    }

private:
    const std::function<CURLcode(scripted::Handle&)> m_served = scripted::curl().perform;
    std::map<unsigned, CURLcode> m_ends;
};

#endif
