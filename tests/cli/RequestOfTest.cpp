#include "harness/TextFile.h"

#include <RequestOf.h>
#include <UsageError.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using namespace std::string_literals;

namespace {

Arguments argumentsFor(Operation operation)
{
    Arguments arguments;
    arguments.operation = operation;
    arguments.url = "ftps://host/dir/";
    arguments.ca = "none";
    arguments.local = "local";
    arguments.remoteName = "old";
    arguments.newName = "new";
    return arguments;
}

std::string refusalOf(const Arguments& arguments)
{
    try {
        requestOf(arguments);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "taken";
}

std::string refusalOf(Operation operation, const std::string& local)
{
    Arguments arguments = argumentsFor(operation);
    arguments.local = local;
    return refusalOf(arguments);
}

/// Files that are none, in a folder of their own.
class OddFiles
{
public:
    OddFiles()
    {
        EXPECT_NE(mkdtemp(m_folder), nullptr);
        EXPECT_EQ(mkfifo(pipe().c_str(), 0600), 0);
        EXPECT_EQ(mknod(socket().c_str(), S_IFSOCK | 0600, 0), 0);
        EXPECT_EQ(symlink("/dev/stdout", linkToOutput().c_str()), 0);
        EXPECT_EQ(symlink("regular", link().c_str()), 0);
    }
    ~OddFiles() { std::filesystem::remove_all(m_folder); }
    OddFiles(const OddFiles&) = delete;
    OddFiles& operator=(const OddFiles&) = delete;

    std::string pipe() const { return std::string(m_folder) + "/pipe"; }
    std::string socket() const { return std::string(m_folder) + "/socket"; }
    std::string linkToOutput() const { return std::string(m_folder) + "/output"; }
    std::string link() const { return std::string(m_folder) + "/link"; }

private:
    char m_folder[32] = "/tmp/sftpclient-odd-XXXXXX";
};

} // namespace

TEST(RequestOf, FillsInWhatATransferReads)
{
    const SFtpRequest request = requestOf(argumentsFor(Operation::Get));
    EXPECT_EQ(request.remotePath, "ftps://host/dir/");
    EXPECT_EQ(request.localPath, "local");
    EXPECT_EQ(request.userName, "");
    EXPECT_EQ(request.password, "");
    EXPECT_EQ(request.caCert, "none");
    EXPECT_EQ(request.port, 990U);
}

TEST(RequestOf, PutsTheNewNameWhereARenameReadsIt)
{
    const SFtpRequest request = requestOf(argumentsFor(Operation::Move));
    EXPECT_EQ(request.remotePath, "ftps://host:990/dir/");
    EXPECT_EQ(request.remoteFileName, "old");
    EXPECT_EQ(request.localPath, "new");
}

TEST(RequestOf, CompletesTheUrlOfADelete)
{
    Arguments arguments = argumentsFor(Operation::Remove);
    arguments.port = 2121;
    const SFtpRequest request = requestOf(arguments);
    EXPECT_EQ(request.remotePath, "ftps://host:2121/dir/");
    EXPECT_EQ(request.remoteFileName, "old");
    EXPECT_EQ(request.port, 2121U);
}

TEST(RequestOf, ReadsTheCertificateByteForByte)
{
    const std::string bytes = "0\x82\0\n\r\xff end"s;
    const TextFile file(bytes);
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.ca = file.path();
    EXPECT_EQ(requestOf(arguments).caCert, bytes);
}

TEST(RequestOf, RefusesACertificateThatItCannotRead)
{
    Arguments arguments = argumentsFor(Operation::Get);
    const TextFile empty("");
    const std::vector<std::pair<std::string, std::string>> reasons{{"/nowhere/ca.pem", "No such file or directory"},
                                                                   {"/", "Is a directory"},
                                                                   {empty.path(), "it is empty"},
                                                                   {"/dev/zero", "it is larger than 1024 KiB"}};
    for (const auto& reason : reasons) {
        arguments.ca = reason.first;
        EXPECT_EQ(refusalOf(arguments), "The CA certificate " + reason.first + " cannot be read (" + reason.second +
                                            "): name a PEM or DER file.");
    }
}

TEST(RequestOf, AsksForTheCertificateWhereTheOperationReadsIt)
{
    const TextFile local("contents");
    for (const Operation operation :
         {Operation::Test, Operation::List, Operation::Get, Operation::Put, Operation::Move, Operation::Remove}) {
        Arguments arguments = argumentsFor(operation);
        arguments.local = local.path();
        arguments.ca = "";
        EXPECT_EQ(refusalOf(arguments), operation == Operation::Put ? "taken"
                                                                    : "The server's CA certificate is missing: give "
                                                                      "--ca FILE or --ca none.");
        arguments.url = "sftp://host/dir/";
        EXPECT_EQ(refusalOf(arguments), "taken");
    }
}

TEST(RequestOf, RefusesNamesThatBreakACommand)
{
    const std::string control = " must not hold a control byte (a line break, a tab, ...).";
    const std::string split = " must not be empty or hold a blank: the server's command is split there.";
    for (const std::string& name : {"a\nb"s, "a\tb"s, "a\0b"s, "a\x7f"s, ""s, "a b"s, " "s}) {
        const std::string refusal = name.empty() || name.find(' ') != std::string::npos ? split : control;
        Arguments move = argumentsFor(Operation::Move);
        move.remoteName = name;
        EXPECT_EQ(refusalOf(move), "OLD" + refusal);
        move = argumentsFor(Operation::Move);
        move.newName = name;
        EXPECT_EQ(refusalOf(move), "NEW" + refusal);
        Arguments remove = argumentsFor(Operation::Remove);
        remove.remoteName = name;
        EXPECT_EQ(refusalOf(remove), "NAME" + refusal);
    }
}

TEST(RequestOf, NamesTheLocalFileAsTheUrlDoes)
{
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.local = "";
    arguments.url = "ftps://me@host/dir/a%20b.bak";
    EXPECT_EQ(requestOf(arguments).localPath, "a b.bak");
    EXPECT_EQ(requestOf(arguments).remotePath, "ftps://host/dir/a%20b.bak");
}

TEST(RequestOf, NamesTheRemoteFileAsTheLocalOne)
{
    const TextFile local("contents");
    const std::string name = local.path().substr(local.path().rfind('/') + 1);
    Arguments arguments = argumentsFor(Operation::Put);
    arguments.local = local.path();
    EXPECT_EQ(requestOf(arguments).remotePath, "ftps://host/dir/" + name);
    EXPECT_EQ(requestOf(arguments).localPath, local.path());
}

TEST(RequestOf, RefusesALocalFileThatTheLibraryCouldNotOpen)
{
    EXPECT_EQ(refusalOf(Operation::Put, "/nowhere/local"),
              "The file /nowhere/local cannot be read (No such file or directory): name one that can be.");
    EXPECT_EQ(refusalOf(Operation::Put, "/dev/null/local"),
              "The file /dev/null/local cannot be read (Not a directory): name one that can be.");
    for (const Operation operation : {Operation::Get, Operation::List}) {
        EXPECT_EQ(refusalOf(operation, "/dev/null/local"),
                  "The file /dev/null/local cannot be written (Not a directory): name one that can be.");
        EXPECT_EQ(refusalOf(operation, "/nowhere/local"),
                  "The file /nowhere/local cannot be written (No such file or directory): name one that can be.");
    }
}

TEST(RequestOf, RefusesToSendWhatIsNoRegularFile)
{
    const OddFiles odd;
    const std::string remedy = ": put sends regular files only; write the contents into one first.";
    EXPECT_EQ(refusalOf(Operation::Put, "/"), "/ is a directory" + remedy);
    EXPECT_EQ(refusalOf(Operation::Put, "/dev/null"), "/dev/null is a device" + remedy);
    EXPECT_EQ(refusalOf(Operation::Put, odd.pipe()), odd.pipe() + " is a pipe" + remedy);
    EXPECT_EQ(refusalOf(Operation::Put, odd.socket()), odd.socket() + " is a socket" + remedy);
    EXPECT_EQ(refusalOf(Operation::Put, "/proc/self/status"),
              "/proc/self/status has no size: copy it into a regular file first.");
    EXPECT_EQ(refusalOf(Operation::Put, TextFile("").path()), "taken");
}

TEST(RequestOf, RefusesToWriteWhatIsNoRegularFile)
{
    const OddFiles odd;
    const std::string ofGet = ": name a regular file.";
    const std::string ofList = ": name a regular file, or leave it out for the names on standard output.";
    for (const auto& each : {std::make_pair(Operation::Get, ofGet), std::make_pair(Operation::List, ofList)}) {
        EXPECT_EQ(refusalOf(each.first, "/"), "/ is a directory" + each.second);
        EXPECT_EQ(refusalOf(each.first, "/dev/full"), "/dev/full is a device" + each.second);
        EXPECT_EQ(refusalOf(each.first, odd.pipe()), odd.pipe() + " is a pipe" + each.second);
        for (const std::string file : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "/dev/stderr", "/dev/fd/2"}) {
            EXPECT_EQ(refusalOf(each.first, file), file + " is an open file of the command itself" + each.second);
        }
        EXPECT_EQ(refusalOf(each.first, odd.linkToOutput()),
                  odd.linkToOutput() + " is an open file of the command itself" + each.second);
        EXPECT_EQ(refusalOf(each.first, "/dev/null"), "taken");
        EXPECT_EQ(refusalOf(each.first, odd.link()), "taken");
    }
}

TEST(RequestOf, RefusesALastNameThatIsADirectoryHere)
{
    const std::string folder = "requestof-" + std::to_string(getpid());
    ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.local = "";
    arguments.url = "ftps://host/" + folder;
    EXPECT_EQ(refusalOf(arguments), folder + " is a directory: name a regular file.");
    EXPECT_EQ(rmdir(folder.c_str()), 0);
}
