// Sessions against a model of what the server and the local folder hold: random operations, thousands of them, on a
// server that misbehaves now and then. Whatever an operation reports, each file is as it was or as it was to be.
#include "SessionLive.h"
#include "World.h"

#include "support/Codes.h"

#include <map>
#include <random>
#include <set>
#include <sstream>

namespace {

// Names that a URL must code, and that a command must not.
const std::vector<std::string> kNames = {"a.bak", "b c.bak", "100%.bak", "q?x#.bak", "\xc3\xa4;=.bak", "'\"(1).bak"};
const std::vector<std::string> kDirectories = {"", "weekly", "d 2", "weekly/sub", "d 2/s%20b"};

struct Case
{
    std::string name;
    unsigned seed;
    unsigned steps;
    bool tls;
};

void PrintTo(const Case& of, std::ostream* stream) { *stream << of.name << ", seed " << of.seed; }

/// One operation: what it did, and what the world is to be when it has worked.
struct Step
{
    std::string what;
    int expected = 0; ///< the code, where the server does as it is told
    int code = -1;
    World remote;   ///< after success
    World local;    ///< after success
    World prepared; ///< of the remote one: directories alone are there
};

class SessionModel : public SessionLive, public testing::WithParamInterface<Case>
{
protected:
    void SetUp() override
    {
        config.keepTranscripts = false;
        config.tlsRequiredAtLogin = config.tlsReuseRequired = GetParam().tls;
        config.tls = GetParam().tls ? testserver::TlsMode::Explicit : testserver::TlsMode::Plain;
        planFaults();
        serve();
    }

    void planFaults();
    void run();
    void judge(const Step& step, bool& excused);

    // A call each: they fill in what is to come.
    void upload(SFtpSession& session, Step& step);
    void uploadStream(SFtpSession& session, Step& step);
    void download(SFtpSession& session, Step& step);
    void downloadStream(SFtpSession& session, Step& step);
    void rename(SFtpSession& session, Step& step);
    void remove(SFtpSession& session, Step& step);
    void list(SFtpSession& session, Step& step);
    void listEntries(SFtpSession& session, Step& step);
    void stat(SFtpSession& session, Step& step);
    void makeDirectory(SFtpSession& session, Step& step);
    void removeDirectory(SFtpSession& session, Step& step);

    unsigned pick(unsigned below) { return static_cast<unsigned>(random() % below); }
    const std::string& anyOf(const std::vector<std::string>& all)
    {
        return all[pick(static_cast<unsigned>(all.size()))];
    }
    std::string anyDirectory() { return anyOf(kDirectories); }
    std::string anyFile()
    {
        const std::string directory = anyDirectory();
        return (directory.empty() ? "" : directory + "/") + anyOf(kNames);
    }
    std::string anyContent();
    std::string anyLocalName() { return "local" + std::to_string(pick(3)); }

    void aim(const std::string& path);
    /// A file comes about there, with the directories above it.
    static void put(Step& step, const std::string& path, const std::string& content);
    /// What reading a file gives, or listing a directory.
    int expectedAt(bool there) const { return there ? 0 : CURLE_REMOTE_FILE_NOT_FOUND; }

    std::mt19937 random{GetParam().seed};
    World remote;
    World kept; // locally
    unsigned failures = 0;
};

// Every fourth connection meets one misbehaviour, and only one: what a session does about it finds a server that works.
void SessionModel::planFaults()
{
    const std::vector<std::string> ends = {"drop", "reset", "last:421 closing", "reply:451 not now", "reply:550 no"};
    const std::vector<std::string> commands = {"CWD",  "EPSV", "TYPE", "SIZE", "RETR", "STOR", "NLST", "MLSD", "MLST",
                                               "RNFR", "RNTO", "DELE", "MKD",  "RMD",  "DONE", "FEAT", "MDTM"};
    const std::vector<std::string> ofData = {"DATA=drop-after:", "DATA=reset-after:"};
    for (unsigned session = 1; session < GetParam().steps; session += 4) {
        const std::string when = "#" + std::to_string(1 + pick(2)) + "=";
        std::string fault = anyOf(commands) + when + anyOf(ends);
        switch (pick(8)) {
        case 0:
            fault = anyOf(ofData) + std::to_string(pick(3) * 40);
            fault.insert(4, when.substr(0, 2));
            break;
        case 1:
            fault = "LISTEN" + when + "refuse";
            break;
        case 2: // carried out, but never confirmed
            fault = anyOf({"RNTO", "DELE", "MKD", "RMD"}) + when + "pad:1048576";
            break;
        default:
            break;
        }
        misbehave(std::to_string(session) + "/" + fault);
    }
}

std::string SessionModel::anyContent()
{
    const std::string mark = std::to_string(random()) + " ";
    return pick(8) == 0 ? "" : mark + std::string(pick(pick(40) == 0 ? 200000 : 300), 'x');
}

void SessionModel::aim(const std::string& path) { aimAt("/" + inUrl(path)); }

void SessionModel::put(Step& step, const std::string& path, const std::string& content)
{
    for (std::string each = parentOf(path); !each.empty(); each = parentOf(each)) {
        step.prepared.directories.insert(each);
    }
    step.remote = step.prepared;
    step.remote.files[path] = content;
}

void SessionModel::upload(SFtpSession& session, Step& step)
{
    const std::string path = anyFile();
    const std::string name = anyLocalName();
    const bool there = kept.files.count(name) == 1;
    step.what = "upload " + path;
    step.expected = there ? 0 : static_cast<int>(CURLE_READ_ERROR);
    if (there) {
        put(step, path, kept.files[name]);
    }
    aim(path);
    request.localPath = local(name);
    step.code = session.UploadFileToSFtpServer(request, errorText);
}

void SessionModel::uploadStream(SFtpSession& session, Step& step)
{
    const std::string path = anyFile();
    const std::string content = anyContent();
    step.what = "upload a stream to " + path;
    put(step, path, content);
    aim(path);
    std::istringstream in(content);
    step.code =
        session.UploadFrom(request, in, errorText, pick(2) == 0 ? -1 : static_cast<std::int64_t>(content.size()));
}

void SessionModel::download(SFtpSession& session, Step& step)
{
    const std::string path = anyFile();
    const std::string name = anyLocalName();
    const auto found = remote.files.find(path);
    step.what = "download " + path;
    step.expected = expectedAt(found != remote.files.end());
    if (found != remote.files.end()) {
        step.local.files[name] = found->second;
    }
    aim(path);
    request.localPath = local(name);
    step.code = session.DownLoadSFtpFile(request, errorText);
}

void SessionModel::downloadStream(SFtpSession& session, Step& step)
{
    const std::string path = anyFile();
    const auto found = remote.files.find(path);
    step.what = "download " + path + " to a stream";
    step.expected = expectedAt(found != remote.files.end());
    aim(path);
    std::ostringstream got;
    step.code = session.DownLoadTo(request, got, errorText);
    if (found != remote.files.end()) {
        const std::string expected = found->second.substr(0, step.code == 0 ? std::string::npos : got.str().size());
        EXPECT_TRUE(sameBytes(expected, got.str()));
    }
}

void SessionModel::rename(SFtpSession& session, Step& step)
{
    const std::string directory = anyDirectory();
    const std::string prefix = directory.empty() ? "" : directory + "/";
    const std::string from = anyOf(kNames);
    const std::string to = anyOf(kNames);
    step.what = "rename " + prefix + from + " to " + to;
    step.expected = !holds(remote, directory)                ? CURLE_REMOTE_FILE_NOT_FOUND
                    : remote.files.count(prefix + from) == 0 ? CURLE_QUOTE_ERROR
                                                             : CURLE_OK;
    if (step.expected == 0 && from != to) {
        step.remote.files[prefix + to] = step.remote.files[prefix + from];
        step.remote.files.erase(prefix + from);
    }
    aim(directory.empty() ? "" : directory + "/");
    request.remoteFileName = from;
    request.localPath = to;
    step.code = session.ReNameSFtpFile(request, errorText);
}

void SessionModel::remove(SFtpSession& session, Step& step)
{
    const std::string directory = anyDirectory();
    const std::string path = (directory.empty() ? "" : directory + "/") + anyOf(kNames);
    step.what = "delete " + path;
    step.expected = !holds(remote, directory)       ? CURLE_REMOTE_FILE_NOT_FOUND
                    : remote.files.count(path) == 0 ? CURLE_QUOTE_ERROR
                                                    : CURLE_OK;
    step.remote.files.erase(path);
    aim(directory);
    request.remoteFileName = nameIn(path);
    step.code = session.DelSFtpFile(request, errorText);
}

// In the order of the names, as the server gives them.
void SessionModel::list(SFtpSession& session, Step& step)
{
    const std::string directory = anyDirectory();
    const std::string name = anyLocalName();
    step.what = "list " + directory;
    step.expected = expectedAt(holds(remote, directory));
    std::set<std::string> names;
    for (const auto& each : remote.files) {
        names.insert(parentOf(each.first) == directory ? nameIn(each.first) : "");
    }
    for (const std::string& each : remote.directories) {
        names.insert(parentOf(each) == directory ? nameIn(each) : "");
    }
    names.erase("");
    if (step.expected == 0) {
        std::string& lines = step.local.files[name] = "";
        for (const std::string& each : names) {
            lines += each + "\n";
        }
    }
    aim(directory.empty() ? "" : directory + "/");
    request.localPath = local(name);
    step.code = session.Listsftpdir(request, errorText);
}

void SessionModel::listEntries(SFtpSession& session, Step& step)
{
    const std::string directory = anyDirectory();
    step.what = "list the entries of " + directory;
    step.expected = expectedAt(holds(remote, directory));
    std::map<std::string, std::int64_t> expected;
    for (const auto& [path, content] : remote.files) {
        if (parentOf(path) == directory) {
            expected[nameIn(path)] = static_cast<std::int64_t>(content.size());
        }
    }
    for (const std::string& each : remote.directories) {
        if (parentOf(each) == directory) {
            expected[nameIn(each)] = -1;
        }
    }
    aim(directory);
    entries.clear();
    step.code = session.ListEntries(request, entries, errorText);
    std::map<std::string, std::int64_t> got;
    for (const RemoteEntry& each : entries) {
        got[each.name] = each.size;
        EXPECT_EQ(each.size < 0, each.kind == EntryKind::Directory) << each.name;
    }
    EXPECT_EQ(step.code == 0 ? expected : (std::map<std::string, std::int64_t>{}), got);
}

void SessionModel::stat(SFtpSession& session, Step& step)
{
    const bool ofDirectory = pick(4) == 0;
    const std::string path = ofDirectory ? kDirectories[1 + pick(4)] : anyFile();
    const auto found = remote.files.find(path);
    step.what = "stat " + path;
    step.expected = expectedAt(found != remote.files.end() || (ofDirectory && holds(remote, path)));
    aim(path);
    step.code = session.StatEntry(request, entry, errorText);
    if (step.code == 0) {
        EXPECT_EQ(nameIn(path), entry.name);
        // A SIZE that was refused leaves a file's size unknown.
        const auto size = ofDirectory ? -1 : static_cast<std::int64_t>(found->second.size());
        EXPECT_TRUE(entry.size == size || entry.size == -1) << entry.size << " in place of " << size;
    }
}

void SessionModel::makeDirectory(SFtpSession& session, Step& step)
{
    const std::string path = kDirectories[1 + pick(4)];
    step.what = "make " + path;
    step.expected = !holds(remote, parentOf(path)) ? CURLE_REMOTE_FILE_NOT_FOUND
                    : holds(remote, path)          ? CURLE_QUOTE_ERROR
                                                   : CURLE_OK;
    if (step.expected == 0) {
        step.remote.directories.insert(path);
    }
    aim(path);
    step.code = session.MakeSFtpDir(request, errorText);
}

void SessionModel::removeDirectory(SFtpSession& session, Step& step)
{
    const std::string path = kDirectories[1 + pick(4)];
    step.what = "remove " + path;
    step.expected = !holds(remote, parentOf(path))                   ? CURLE_REMOTE_FILE_NOT_FOUND
                    : !holds(remote, path) || !isEmpty(remote, path) ? CURLE_QUOTE_ERROR
                                                                     : CURLE_OK;
    if (step.expected == 0) {
        step.remote.directories.erase(path);
    }
    aim(path);
    step.code = session.RemoveSFtpDir(request, errorText);
}

// `excused`: a failure of this session that was the server's has been seen; there is but one.
void SessionModel::judge(const Step& step, bool& excused)
{
    const World remoteNow = worldIn(served(""));
    const World localNow = worldIn(local(""));
    const bool asExpected = step.code == step.expected;
    EXPECT_TRUE(asExpected || !excused) << nameOf(step.code) << " in place of " << nameOf(step.expected);
    excused = excused || !asExpected;
    failures += asExpected ? 0 : 1;
    if (step.code == 0) {
        EXPECT_EQ(step.remote, remoteNow);
        EXPECT_EQ(step.local, localNow);
    } else {
        EXPECT_TRUE(remoteNow == remote || remoteNow == step.prepared || remoteNow == step.remote)
            << remoteNow << "\nbefore: " << remote;
        EXPECT_EQ(kept, localNow);
    }
    remote = remoteNow;
    kept = localNow;
}

void SessionModel::run()
{
    using Operation = void (SessionModel::*)(SFtpSession&, Step&);
    const Operation operations[] = {
        &SessionModel::upload,         &SessionModel::uploadStream, &SessionModel::download,
        &SessionModel::downloadStream, &SessionModel::rename,       &SessionModel::remove,
        &SessionModel::list,           &SessionModel::listEntries,  &SessionModel::stat,
        &SessionModel::makeDirectory,  &SessionModel::uploadStream, &SessionModel::removeDirectory};
    SessionOptions options;
    options.requireTls = GetParam().tls;
    constexpr unsigned kStepsOfASession = 5;
    for (unsigned begin = 0; begin < GetParam().steps && !HasFailure(); begin += kStepsOfASession) {
        SFtpSession session(options);
        bool excused = false;
        for (unsigned i = begin; i < begin + kStepsOfASession && !HasFailure(); ++i) {
            Step step;
            step.remote = step.prepared = remote;
            step.local = kept;
            (this->*operations[pick(std::size(operations))])(session, step);
            SCOPED_TRACE("step " + std::to_string(i) + ", " + step.what + ": " + nameOf(step.code) + ", " + errorText);
            judge(step, excused);
        }
    }
}

} // namespace

TEST_P(SessionModel, IsWhatTheServerHolds)
{
    kept = worldIn(local(""));
    run();
    EXPECT_GE(failures, GetParam().steps / 200) << "few steps met a misbehaviour";
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        all.push_back({"Clear" + std::to_string(seed), seed, 800, false});
    }
    for (unsigned seed = 13; seed <= 16; ++seed) {
        all.push_back({"Tls" + std::to_string(seed), seed, 100, true});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Random, SessionModel, testing::ValuesIn(cases()),
                         [](const auto& of) { return of.param.name; });
