#include "operation/Operations.h"

#include "call/Failure.h"
#include "call/SetOption.h"
#include "connection/Transfer.h"
#include "request/Text.h"

namespace session {

namespace {

void command(const Work& work, const std::string& directoryUrl, const std::vector<std::string>& commands)
{
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(directoryUrl);
    transfer.withoutData();
    transfer.after(commands);
    transfer.run();
}

void requireNonEmpty(const char* field, const std::string& name)
{
    if (name.empty()) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, std::string(field) + " names nothing");
    }
}

// Some servers take "~" for a home directory.
std::string withoutHome(const std::string& name) { return (name.compare(0, 1, "~") == 0 ? "./" : "") + name; }

} // namespace

void test(const Work& work)
{
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(work.access.target().directoryUrl());
    transfer.withoutData();
    transfer.after({});
    if (work.access.target().isSsh()) {
        // A question whose answer does not matter: otherwise nothing would be sent over a kept connection.
        set(transfer.handle(), CURLOPT_FILETIME, 1L);
    }
    transfer.run();
}

void renameFile(const Work& work)
{
    const Target& target = work.access.target();
    const std::string& from = work.access.request().remoteFileName;
    const std::string& to = work.access.request().localPath;
    requireNonEmpty("remoteFileName", from);
    requireNonEmpty("localPath", to);
    requireName("localPath", to);
    if (target.isSsh()) {
        command(work, target.directoryUrl(),
                {"rename " + quoted(target.commandPath(from)) + " " + quoted(target.commandPath(to))});
    } else {
        command(work, target.directoryUrl(), {"RNFR " + from, "RNTO " + to});
    }
}

void deleteFile(const Work& work)
{
    const Target& target = work.access.target();
    const std::string& name = work.access.request().remoteFileName;
    requireNonEmpty("remoteFileName", name);
    command(work, target.directoryUrl(), {target.isSsh() ? "rm " + quoted(target.commandPath(name)) : "DELE " + name});
}

void makeDirectory(const Work& work)
{
    const Target& target = work.access.target();
    requireNonEmpty("remotePath", target.name());
    command(work, target.parentUrl(),
            {target.isSsh() ? "mkdir " + quoted(target.commandPathInParent(target.name()))
                            : "MKD " + withoutHome(target.name())});
}

void removeDirectory(const Work& work)
{
    const Target& target = work.access.target();
    requireNonEmpty("remotePath", target.name());
    command(work, target.parentUrl(),
            {target.isSsh() ? "rmdir " + quoted(target.commandPathInParent(target.name()))
                            : "RMD " + withoutHome(target.name())});
}

} // namespace session
