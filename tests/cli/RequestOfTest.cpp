#include "harness/TextFile.h"

#include <RequestOf.h>
#include <UsageError.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

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
    for (const std::string& path : {"/nowhere/ca.pem"s, "/"s, empty.path()}) {
        arguments.ca = path;
        EXPECT_EQ(refusalOf(arguments),
                  "The CA certificate " + path + " cannot be read or is empty: name a PEM or DER file.");
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
    Arguments arguments = argumentsFor(Operation::Put);
    arguments.local = "/nowhere/local";
    EXPECT_EQ(refusalOf(arguments),
              "The file /nowhere/local cannot be read (No such file or directory): name one that can be.");
    for (const Operation operation : {Operation::Put, Operation::Get, Operation::List}) {
        arguments = argumentsFor(operation);
        arguments.local = "/";
        EXPECT_EQ(refusalOf(arguments), "/ is a directory: name the file itself.");
        arguments.local = "/dev/null/local";
        EXPECT_EQ(refusalOf(arguments), std::string("The file /dev/null/local cannot be ") +
                                            (operation == Operation::Put ? "read" : "written") +
                                            " (Not a directory): name one that can be.");
    }
    for (const Operation operation : {Operation::Get, Operation::List}) {
        arguments = argumentsFor(operation);
        arguments.local = "/nowhere/local";
        EXPECT_EQ(refusalOf(arguments),
                  "The file /nowhere/local cannot be written (No such file or directory): name one that can be.");
        arguments.local = "/dev/full";
        EXPECT_EQ(refusalOf(arguments), "taken");
    }
}

TEST(RequestOf, RefusesALastNameThatIsADirectoryHere)
{
    const std::string folder = "requestof-" + std::to_string(getpid());
    ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
    Arguments arguments = argumentsFor(Operation::Get);
    arguments.local = "";
    arguments.url = "ftps://host/" + folder;
    EXPECT_EQ(refusalOf(arguments), folder + " is a directory: name the file itself.");
    EXPECT_EQ(rmdir(folder.c_str()), 0);
}
