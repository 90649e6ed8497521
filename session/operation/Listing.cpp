#include "operation/Operations.h"

#include "call/Failure.h"
#include "call/SetOption.h"
#include "connection/Transfer.h"
#include "operation/Entries.h"
#include "operation/Features.h"
#include "operation/LineSplitter.h"

#include <algorithm>
#include <optional>

namespace session {

namespace {

// The listing is kept in memory, so the server must not decide its size.
constexpr std::int64_t kLargestListing = 128LL * 1024 * 1024;

Failure listingTooLarge() { return refusal(CURLE_FILESIZE_EXCEEDED, "the listing is larger than 128 MiB"); }

Failure unknownFormat(bool facts)
{
    const std::string format = facts ? "MLSD" : "\"ls -l\"";
    return refusal(CURLE_WEIRD_SERVER_REPLY, "a line of the listing is not in the format of " + format);
}

RemoteEntry found(const std::optional<RemoteEntry>& entry, const std::string& name)
{
    if (!entry) {
        throw refusal(CURLE_REMOTE_FILE_NOT_FOUND, "the directory holds no \"" + name + "\"");
    }
    RemoteEntry same = *entry;
    same.name = name;
    return same;
}

// A listing has no size that could be compared.
void requireEnd(const Work& work, Transfer& transfer)
{
    if (work.access.options().requireListingEnd) {
        transfer.requireEnd();
    }
}

// What vsftpd says, with a 226, of a directory that the user may not read; its listing is empty.
bool isUnread(const Replies& replies) { return replies.last().find("failed to open directory") != std::string::npos; }

std::vector<RemoteEntry> entriesAt(const Work& work, const std::string& directoryUrl)
{
    const bool isSsh = work.access.target().isSsh();
    const bool facts = !isSsh && featuresOf(work, directoryUrl).mlst;
    bool hasRiddles = false;
    std::vector<RemoteEntry> entries;
    std::size_t kept = 0; // a few bytes on the wire can take many here
    LineSplitter lines([&](std::string_view line) {
        std::optional<RemoteEntry> entry = facts ? entryOfFacts(line) : entryOfLongLine(line);
        if (entry && leadsNowhereElse(entry->name)) {
            kept += sizeof *entry + entry->name.size();
            if (kept > static_cast<std::size_t>(kLargestListing)) {
                throw listingTooLarge();
            }
            entries.push_back(std::move(*entry));
        }
        if (!entry && (facts ? looksLikeFacts(line) : looksLikeEntry(line))) {
            // Without its entry, the list would be taken for the whole.
            throw unknownFormat(facts);
        }
        // Over SSH libcurl writes a line for each entry, of what the server tells about it.
        hasRiddles = hasRiddles || (!entry && (!tellsNothing(line) || (isSsh && line.empty())));
    });
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(directoryUrl);
    requireEnd(work, transfer);
    if (facts) {
        set(transfer.handle(), CURLOPT_CUSTOMREQUEST, "MLSD");
    }
    transfer.receive([&work, take = lines.sink()](const char* bytes, std::size_t count) {
        if (work.call.bytes() > kLargestListing) {
            throw listingTooLarge();
        }
        return take(bytes, count);
    });
    transfer.run();
    if (transfer.replies().lastCode() == 450 || isUnread(transfer.replies())) {
        // libcurl takes 450 for an empty directory, because some servers answer NLST of one that way.
        throw transfer.failure(CURLE_FTP_COULDNT_RETR_FILE);
    }
    lines.end();
    // Beside entries, it is the second half of a name with a line break.
    if (hasRiddles && entries.empty()) {
        throw unknownFormat(facts);
    }
    return entries;
}

// By MLST, one command for everything.
RemoteEntry statByFacts(const Work& work, const std::string& name)
{
    const Target& target = work.access.target();
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(target.parentUrl());
    transfer.withoutData();
    transfer.after({"MLST " + name});
    const CURLcode code = transfer.tryToRun();
    if (code != CURLE_OK) {
        throw transfer.failure(code == CURLE_QUOTE_ERROR ? CURLE_REMOTE_FILE_NOT_FOUND : code);
    }
    // "250-Listing", the facts after a blank, "250 End". The last such line: what a server says on the way into the
    // directory may have some, too.
    const std::vector<std::string>& lines = transfer.replies().lines();
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (!line->empty() && line->front() == ' ') {
            if (const std::optional<RemoteEntry> entry = entryOfFacts(std::string_view(*line).substr(1))) {
                return found(entry, name);
            }
        }
    }
    throw refusal(CURLE_WEIRD_SERVER_REPLY, "the reply to MLST holds no facts");
}

// By SIZE and MDTM; a directory has neither, but can be entered.
RemoteEntry statByCommands(const Work& work, const std::string& name)
{
    const Target& target = work.access.target();
    if (std::optional<RemoteEntry> file = fileAt(work, target.parentUrl() + target.encodedName())) {
        if (file->size < 0 && !file->modified) {
            throw refusal(CURLE_REMOTE_FILE_NOT_FOUND, "the server reports neither its size nor its time");
        }
        file->name = name;
        return *file;
    }
    const Failure missing = refusal(CURLE_REMOTE_FILE_NOT_FOUND, "there is no \"" + name + "\"");
    try {
        visitDirectory(work, target.directoryUrl(), {});
    } catch (const Failure& failure) {
        throw failure.code() == CURLE_REMOTE_FILE_NOT_FOUND ? missing : failure;
    }
    return {name, EntryKind::Directory, -1, std::nullopt};
}

// The kind and size come from a listing of the whole directory; the time from the file itself.
RemoteEntry statOverSsh(const Work& work, const std::string& name)
{
    const Target& target = work.access.target();
    const std::vector<RemoteEntry> entries = entriesAt(work, target.parentUrl());
    const auto same =
        std::find_if(entries.begin(), entries.end(), [&name](const RemoteEntry& each) { return each.name == name; });
    RemoteEntry entry = found(same == entries.end() ? std::nullopt : std::optional<RemoteEntry>(*same), name);
    if (entry.kind == EntryKind::File) {
        const std::optional<RemoteEntry> file = fileAt(work, target.parentUrl() + target.encodedName());
        entry.modified = file ? file->modified : std::nullopt;
    }
    return entry;
}

} // namespace

std::optional<RemoteEntry> fileAt(const Work& work, const std::string& url)
{
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(url);
    transfer.withoutData();
    set(transfer.handle(), CURLOPT_FILETIME, 1L);
    const CURLcode code = transfer.tryToRun();
    const bool isSsh = work.access.target().isSsh();
    if (code == CURLE_REMOTE_FILE_NOT_FOUND || code == CURLE_REMOTE_ACCESS_DENIED || (isSsh && code == CURLE_SSH)) {
        return std::nullopt;
    }
    if (code != CURLE_OK) {
        throw transfer.failure(code);
    }
    RemoteEntry entry{"", EntryKind::File, -1, std::nullopt};
    curl_off_t size = -1;
    curl_off_t time = -1;
    curl_easy_getinfo(transfer.handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    curl_easy_getinfo(transfer.handle(), CURLINFO_FILETIME_T, &time);
    if (time >= 0) {
        entry.modified = timeAt(time);
    }
    if (isSsh) {
        entry.size = std::max<curl_off_t>(size, 0); // -1 for an empty file
    }
    // libcurl turns some replies without a number into 0.
    for (const std::string& line : transfer.replies().lines()) {
        entry.size = size >= 0 && line.compare(0, 4, "213 ") == 0 ? sizeInReply(line) : entry.size;
    }
    return entry;
}

void listNames(const Work& work, const DataSink& sink)
{
    bool taken = true;
    LineSplitter lines([&](std::string_view line) {
        if (line != "." && line != "..") {
            const std::string whole = std::string(line) + "\n";
            taken = taken && sink(whole.data(), whole.size());
        }
    });
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(work.access.target().directoryUrl());
    requireEnd(work, transfer);
    set(transfer.handle(), CURLOPT_DIRLISTONLY, 1L);
    const DataSink splitting = lines.sink();
    transfer.receive([&](const char* bytes, std::size_t count) { return splitting(bytes, count) && taken; });
    transfer.run();
    if (isUnread(transfer.replies())) {
        throw transfer.failure(CURLE_FTP_COULDNT_RETR_FILE);
    }
    lines.end();
}

std::vector<RemoteEntry> listEntries(const Work& work) { return entriesAt(work, work.access.target().directoryUrl()); }

RemoteEntry statEntry(const Work& work)
{
    const Target& target = work.access.target();
    const std::string name = target.name();
    if (name.empty()) {
        visitDirectory(work, target.directoryUrl(), {});
        return {"/", EntryKind::Directory, -1, std::nullopt};
    }
    if (target.isSsh()) {
        return statOverSsh(work, name);
    }
    if (work.connection.features && work.connection.features->mlst) {
        return statByFacts(work, name);
    }
    return statByCommands(work, name);
}

} // namespace session
