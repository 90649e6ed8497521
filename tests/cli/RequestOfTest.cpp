
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <base/RequestOf.h>
#include <base/UsageError.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace std::string_literals;

namespace {

Arguments argumentsFor(Operation operation)
{
    Arguments arguments;
    arguments.operation = operation;
    arguments.asHost = true;
    arguments.remote = RemoteUrl("ftps://host/dir/");
    arguments.ca = "none";
    arguments.local = "local";
    arguments.remoteName = "old";
    arguments.newName = "new";
    return arguments;
}

std::string refusalOf(const Arguments& arguments)
{
    return thrownBy<UsageError>([&] { requestOf(arguments); });
}

std::string refusalOf(Operation operation, const std::string& local)
{
    Arguments arguments = argumentsFor(operation);
    arguments.local = local;
    return refusalOf(arguments);
}

/// Special files, in their own folder.
struct OddFiles
{
    OddFiles()
    {
        EXPECT_EQ(0, mkfifo(pipe.c_str(), 0600));
        EXPECT_EQ(0, mknod(socket.c_str(), S_IFSOCK | 0600, 0));
        EXPECT_EQ(0, symlink("/dev/stdout", linkToOutput.c_str()));
        EXPECT_EQ(0, symlink("regular", link.c_str()));
    }

    const TemporaryFolder folder;
    const std::string pipe = folder.file("pipe");
    const std::string socket = folder.file("socket");
    const std::string linkToOutput = folder.file("output");
    const std::string link = folder.file("link");
};

} // namespace

TEST(RequestOf, FillsInTheFieldsThatATransferReads)
{
    const SFtpRequest request = requestOf(argumentsFor(Operation::Get));
    EXPECT_EQ("ftps://host/dir/", request.remotePath);
    EXPECT_EQ("local", request.localPath);
    EXPECT_EQ("", request.userName);
    EXPECT_EQ("", request.password);
    EXPECT_EQ("none", request.caCert);
    EXPECT_EQ(990U, request.port);
}

TEST(RequestOf, PutsTheNewNameWhereARenameReadsIt)
{
    const SFtpRequest request = requestOf(argumentsFor(Operation::Move));
    EXPECT_EQ("ftps://host:990/dir/", request.remotePath);
    EXPECT_EQ("old", request.remoteFileName);
    EXPECT_EQ("new", request.localPath);
}

TEST(RequestOf, CompletesTheUrlOfADelete)
{
    Arguments arguments = argumentsFor(Operation::Remove);
    arguments.port = 2121;
    const SFtpRequest request = requestOf(arguments);
    EXPECT_EQ("ftps://host:2121/dir/", request.remotePath);
    EXPECT_EQ("old", request.remoteFileName);
    EXPECT_EQ(2121U, request.port);
}

TEST(RequestOf, ReadsTheCertificateByteForByte)
{
    const std::string bytes = "0\x82\0\n\r\xff end"s;
    const TextFile file(bytes);
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.ca = file.path();
    EXPECT_EQ(bytes, requestOf(arguments).caCert);
}

TEST(RequestOf, RejectsACertificateThatItCannotRead)
{
    Arguments arguments = argumentsFor(Operation::Get);
    const TextFile empty("");
    const std::vector<std::pair<std::string, std::string>> reasons{{"/nowhere/ca.pem", "No such file or directory"},
                                                                   {"/", "Is a directory"},
                                                                   {empty.path(), "it is empty"},
                                                                   {"/dev/zero", "it is larger than 1024 KiB"}};
    for (const auto& reason : reasons) {
        arguments.ca = reason.first;
        EXPECT_EQ("The CA certificate " + reason.first + " cannot be read (" + reason.second +
                      "): name a PEM or DER file.",
                  refusalOf(arguments));
    }
}

TEST(RequestOf, RequiresACertificateIfTheOperationReadsIt)
{
    const TextFile local("contents");
    for (const Operation operation :
         {Operation::Test, Operation::List, Operation::Get, Operation::Put, Operation::Move, Operation::Remove}) {
        Arguments arguments = argumentsFor(operation);
        arguments.local = local.path();
        arguments.ca = "";
        EXPECT_EQ(operation == Operation::Put ? kNothingThrown
                                              : "The server's CA certificate is missing: give "
                                                "--ca FILE or --ca none.",
                  refusalOf(arguments));
        arguments.remote = RemoteUrl("sftp://host/dir/");
        EXPECT_EQ(kNothingThrown, refusalOf(arguments));
    }
}

TEST(RequestOf, RejectsNamesThatBreakACommand)
{
    const std::string control = " must not hold a control byte (a line break, a tab, ...).";
    const std::string split = " must not be empty or hold a blank: the server's command is split there.";
    for (const std::string& name : {"a\nb"s, "a\tb"s, "a\0b"s, "a\x7f"s, ""s, "a b"s, " "s}) {
        SCOPED_TRACE(testing::PrintToString(name));
        const std::string refusal = name.empty() || name.find(' ') != std::string::npos ? split : control;
        Arguments move = argumentsFor(Operation::Move);
        move.remoteName = name;
        EXPECT_EQ("OLD" + refusal, refusalOf(move));
        move = argumentsFor(Operation::Move);
        move.newName = name;
        EXPECT_EQ("NEW" + refusal, refusalOf(move));
        Arguments remove = argumentsFor(Operation::Remove);
        remove.remoteName = name;
        EXPECT_EQ("NAME" + refusal, refusalOf(remove));
    }
}

TEST(RequestOf, LeavesMoreToASession)
{
    Arguments move = argumentsFor(Operation::Move);
    move.asHost = false;
    move.ca = "";
    move.remote = RemoteUrl("ftps://host/a%20b:c");
    move.remoteName = "old name";
    EXPECT_EQ("ftps://host/a%20b:c", requestOf(move).remotePath);
    EXPECT_EQ("old name", requestOf(move).remoteFileName);
    move.newName = "";
    EXPECT_EQ("NEW must not be empty.", refusalOf(move));
    move.newName = "a\nb";
    EXPECT_EQ("NEW must not hold a control byte (a line break, a tab, ...).", refusalOf(move));
    Arguments get = argumentsFor(Operation::Get);
    get.asHost = false;
    get.local = "";
    get.remote = RemoteUrl("ftps://host/a?b;type=i");
    EXPECT_EQ("a?b;type=i", requestOf(get).localPath);
    get.local = "-";
    EXPECT_EQ("-", requestOf(get).localPath);
    Arguments put = argumentsFor(Operation::Put);
    put.asHost = false;
    put.local = "/dev/null";
    EXPECT_EQ("/dev/null is a device: put sends regular files only; write the contents into one first, or to standard "
              "input, with - for LOCAL.",
              refusalOf(put));
}

TEST(RequestOf, NamesTheLocalFileAfterTheUrl)
{
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.local = "";
    arguments.remote = RemoteUrl("ftps://me@host/dir/a%20b.bak");
    EXPECT_EQ("a b.bak", requestOf(arguments).localPath);
    EXPECT_EQ("ftps://host/dir/a%20b.bak", requestOf(arguments).remotePath);
}

TEST(RequestOf, NamesTheRemoteFileAfterTheLocalOne)
{
    const TextFile local("contents");
    const std::string name = local.path().substr(local.path().rfind('/') + 1);
    Arguments arguments = argumentsFor(Operation::Put);
    arguments.local = local.path();
    EXPECT_EQ("ftps://host/dir/" + name, requestOf(arguments).remotePath);
    EXPECT_EQ(local.path(), requestOf(arguments).localPath);
}

TEST(RequestOf, RejectsALocalFileThatTheLibraryCouldNotOpen)
{
    EXPECT_EQ("The file /nowhere/local cannot be read (No such file or directory): name one that can be.",
              refusalOf(Operation::Put, "/nowhere/local"));
    EXPECT_EQ("The file /dev/null/local cannot be read (Not a directory): name one that can be.",
              refusalOf(Operation::Put, "/dev/null/local"));
    for (const Operation operation : {Operation::Get, Operation::List}) {
        EXPECT_EQ("The file /dev/null/local cannot be written (Not a directory): name one that can be.",
                  refusalOf(operation, "/dev/null/local"));
        EXPECT_EQ("The file /nowhere/local cannot be written (No such file or directory): name one that can be.",
                  refusalOf(operation, "/nowhere/local"));
    }
}

TEST(RequestOf, SendsOnlyRegularFiles)
{
    const OddFiles odd;
    const std::string remedy = ": put sends regular files only; write the contents into one first.";
    EXPECT_EQ("/ is a directory" + remedy, refusalOf(Operation::Put, "/"));
    EXPECT_EQ("/dev/null is a device" + remedy, refusalOf(Operation::Put, "/dev/null"));
    EXPECT_EQ(odd.pipe + " is a pipe" + remedy, refusalOf(Operation::Put, odd.pipe));
    EXPECT_EQ(odd.socket + " is a socket" + remedy, refusalOf(Operation::Put, odd.socket));
    EXPECT_EQ("/proc/self/status has no size: copy it into a regular file first.",
              refusalOf(Operation::Put, "/proc/self/status"));
    EXPECT_EQ(kNothingThrown, refusalOf(Operation::Put, TextFile("").path()));
}

TEST(RequestOf, WritesOnlyToRegularFiles)
{
    const OddFiles odd;
    const std::string ofGet = ": name a regular file.";
    const std::string ofList = ": name a regular file, or leave it out for the names on standard output.";
    for (const auto& each : {std::make_pair(Operation::Get, ofGet), std::make_pair(Operation::List, ofList)}) {
        EXPECT_EQ("/ is a directory" + each.second, refusalOf(each.first, "/"));
        EXPECT_EQ("/dev/full is a device" + each.second, refusalOf(each.first, "/dev/full"));
        EXPECT_EQ(odd.pipe + " is a pipe" + each.second, refusalOf(each.first, odd.pipe));
        for (const std::string file : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "/dev/stderr", "/dev/fd/2"}) {
            EXPECT_EQ(file + " is an open file of the command itself" + each.second, refusalOf(each.first, file));
        }
        EXPECT_EQ(odd.linkToOutput + " is an open file of the command itself" + each.second,
                  refusalOf(each.first, odd.linkToOutput));
        EXPECT_EQ(kNothingThrown, refusalOf(each.first, "/dev/null"));
        EXPECT_EQ(kNothingThrown, refusalOf(each.first, odd.link));
    }
}

TEST(RequestOf, RejectsAFileNameThatIsALocalDirectory)
{
    const std::string folder = "requestof-" + std::to_string(getpid());
    ASSERT_EQ(0, mkdir(folder.c_str(), 0700));
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.local = "";
    arguments.remote = RemoteUrl("ftps://host/" + folder);
    EXPECT_EQ(folder + " is a directory: name a regular file.", refusalOf(arguments));
    EXPECT_EQ(0, rmdir(folder.c_str()));
}
