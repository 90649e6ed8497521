// Operations on a session, which is what the command does unless it is told otherwise.
#include "harness/Served.h"
#include "harness/TerminalCommand.h"
#include "support/CurlRelease.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <regex>

namespace {

class SessionRun : public Served
{
protected:
    /// Runs a line of the shell in which $0 is the command, with `words` behind it.
    ProgramResult inShell(const std::string& line, const Words& words) const
    {
        ProcessSetup setup = setupOf(words);
        setup.words.insert(setup.words.begin(), {"/bin/bash", "-c", line});
        return runProgram(setup);
    }

    std::string resultOf(const Words& form) const { return lastLine(run(form).err); }

    std::size_t servedFiles() const
    {
        const std::filesystem::directory_iterator files(served(""));
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
};

constexpr char kPipe[] = "\"$0\" \"$@\"";

TEST_F(SessionRun, CarriesOutEveryOperation)
{
    writeFile(local("sent"), "contents");
    serve();
    for (const Words& form : std::vector<Words>{{"mkdir", url("/new/")},
                                                {"test", url("/new/")},
                                                {"put", "sent", url("/new/a%20b")},
                                                {"ls", url("/new")},
                                                {"stat", url("/new/a%20b")},
                                                {"mv", url("/new"), "a b", "c;d?e"},
                                                {"get", url("/new/c;d?e"), "got"},
                                                {"get", url("/new/c;d?e")},
                                                {"rm", url("/new"), "c;d?e"},
                                                {"rmdir", url("/new")}}) {
        SCOPED_TRACE(form[0]);
        const ProgramResult result = run(form);
        EXPECT_TRUE(exited(0, result));
        EXPECT_EQ(form[0] + ": 0 No error", lastLine(result.err));
    }
    EXPECT_EQ("contents", contentOf(local("got")));
    EXPECT_EQ("contents", contentOf(local("c;d?e")));
    EXPECT_EQ(0U, servedFiles());
}

TEST_F(SessionRun, TakesNamesThatLookLikeOptionsAfterTwoDashes)
{
    writeFile(served("-x"), "contents");
    serve();
    EXPECT_TRUE(exited(0, runCommand({"mv", "--ca", ca(), url(), "--", "-x", "--quiet"}, environment(), local(""))));
    EXPECT_TRUE(exists(served("--quiet")));
    EXPECT_TRUE(exited(0, runCommand({"rm", "--ca", ca(), url(), "--", "--quiet"}, environment(), local(""))));
    EXPECT_EQ(0U, servedFiles());
}

TEST_F(SessionRun, MovesAFileElsewhere)
{
    std::filesystem::create_directory(served("weekly"));
    writeFile(served("weekly/z"), "contents");
    serve();
    EXPECT_TRUE(exited(0, run({"mv", url("/weekly/"), "z", "../z"})));
    EXPECT_EQ("contents", contentOf(served("z")));
    EXPECT_FALSE(exists(served("weekly/z")));
}

TEST_F(SessionRun, NamesWhatIsWrongByTheCommandsWords)
{
    writeFile(local("text"), "no certificate");
    serve();
    EXPECT_EQ("rmdir: 43 A libcurl function was given a bad argument: URL names nothing", resultOf({"rmdir", url()}));
    EXPECT_EQ("get: 3 URL using bad/illegal format or missing URL: URL ends in \"/\" and so names a directory",
              resultOf({"get", url("/weekly/"), "got"}));
    EXPECT_EQ("ls: 77 Problem with the SSL CA cert (path? access rights?): --ca holds no certificate, neither as PEM "
              "nor as DER",
              lastLine(runCommand({"ls", url(), "--ca", "text"}, environment(), local("")).err));
    EXPECT_EQ(0U, sessions().size());
}

TEST_F(SessionRun, SendsAFileOverOneConnectionAndGivesItItsNameLast)
{
    writeFile(local("file"), "contents");
    serve();
    const nlohmann::json object = nlohmann::json::parse(run({"put", "file", url(), "--json"}).out);
    EXPECT_EQ(8, object["bytes"]);
    EXPECT_EQ(true, object["sizeChecked"]);
    const std::vector<Lines> said = sessions();
    ASSERT_EQ(1U, said.size());
    EXPECT_TRUE(hasLine("= TLS on control", said[0]));
    EXPECT_TRUE(hasLine("> RNTO file", said[0]));
    EXPECT_FALSE(hasLine("> STOR file", said[0]));
}

TEST_F(SessionRun, LeavesFilesAsTheyWereIfItFails)
{
    writeFile(local("file"), "new contents");
    writeFile(local("got"), "as it was");
    writeFile(served("file"), "as it was");
    serve({"STOR=reply:552 Quota exceeded", "RETR=reply:550 in use"});
    EXPECT_EQ("put: 25 Upload failed (at start/before it took off) (the server's last reply: 552 Quota exceeded)",
              resultOf({"put", "file", url()}));
    EXPECT_EQ("get: 78 Remote file not found (the server's last reply: 550 in use)",
              resultOf({"get", url("/file"), "got"}));
    EXPECT_EQ("as it was", contentOf(local("got")));
    EXPECT_EQ("as it was", contentOf(served("file")));
    EXPECT_EQ(1U, servedFiles());
}

TEST_F(SessionRun, TrustsWhatCaSaysInEveryOperation)
{
    writeFile(local("file"), "contents");
    writeFile(local("other.pem"), testserver::CertificateAuthority("Another CA").certificatePem());
    writeFile(local("both.pem"), contentOf(local("other.pem")) + contentOf(ca()));
    serve();
    const std::string untrusted = ": 60 SSL peer certificate or SSH remote key was not OK: SSL certificate problem: "
                                  "unable to get local issuer certificate (the server's last reply: 234 TLS next)";
    for (const Words& form : std::vector<Words>{{"put", "file", url()}, {"get", url("/file"), "got"}, {"ls", url()}}) {
        Words refused = form;
        refused.insert(refused.end(), {"--ca", "other.pem"});
        Words trusted = form;
        trusted.insert(trusted.end(), {"--ca", "both.pem"});
        EXPECT_EQ(form[0] + ": 0 No error", lastLine(runCommand(trusted, environment(), local("")).err));
        const ProgramResult result = runCommand(refused, environment(), local(""));
        EXPECT_TRUE(exited(60, result));
        EXPECT_EQ(form[0] + untrusted, lastLine(result.err));
        EXPECT_TRUE(holds("\nhint: the server's certificate is not trusted, or not for this host; give the CA that "
                          "issued it with --ca\n",
                          result.err));
    }
}

TEST_F(SessionRun, SendsNoLoginInTheClearUnlessAllowed)
{
    config.tls = testserver::TlsMode::Plain;
    serve();
    const ProgramResult refused = run({"ls", url()});
    EXPECT_TRUE(exited(64, refused));
    EXPECT_TRUE(holds("\nhint: the server offers no TLS on this port; try ftps:, or enable TLS there, or let the login "
                      "go in the clear with --clear-login\n",
                      refused.err));
    EXPECT_TRUE(exited(0, run({"ls", url(), "--clear-login"})));
    const std::vector<Lines> said = sessions();
    ASSERT_EQ(2U, said.size());
    EXPECT_FALSE(hasLine("> USER backup", said[0]));
    EXPECT_TRUE(hasLine("> USER backup", said[1]));
}

TEST_F(SessionRun, RefusesAnotherPublicKeyThanThePin)
{
    serve();
    EXPECT_TRUE(exited(90, run({"test", url(), "--pin=sha256//AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA="})));
}

TEST_F(SessionRun, GoesThroughTheProxyThatIsNamed)
{
    serve();
    EXPECT_TRUE(exited(7, run({"test", url(), "--proxy", "socks5h://127.0.0.1:1"})));
    EXPECT_EQ(0U, sessions().size());
}

TEST_F(SessionRun, ListsEntries)
{
    writeFile(served("notes.txt"), "contents");
    writeFile(served("\xff"), "");
    std::filesystem::create_directory(served("weekly"));
    serve();
    const ProgramResult lines = run({"ls", "-l", url()});
    EXPECT_TRUE(sameText("-            8 2026-01-01T00:00:00Z notes.txt\n"
                         "d            - 2026-01-01T00:00:00Z weekly\n"
                         "-            0 2026-01-01T00:00:00Z \xff\n",
                         lines.out));
    const nlohmann::json object = nlohmann::json::parse(run({"ls", "--long", url(), "--json"}).out);
    EXPECT_EQ(R"([{"kind":"file","modified":"2026-01-01T00:00:00Z","name":"notes.txt","size":8},)"
              R"({"kind":"directory","modified":"2026-01-01T00:00:00Z","name":"weekly"},)"
              R"({"encodedName":"%FF","kind":"file","modified":"2026-01-01T00:00:00Z","name":")"
              "\xef\xbf\xbd"
              R"(","size":0}])",
              object["entries"].dump());
    EXPECT_EQ(0U, object.count("names"));
    const nlohmann::json names = nlohmann::json::parse(run({"ls", url(), "--json"}).out);
    EXPECT_EQ(nlohmann::json({"notes.txt", "weekly", "%FF"}), names["encodedNames"]);
    EXPECT_EQ("sftpclient: With --long the listing goes to standard output: leave LOCAL out.",
              resultOf({"ls", "-l", url(), "names"}));
}

TEST_F(SessionRun, TellsWhatIsThere)
{
    writeFile(served("notes.txt"), "contents");
    serve();
    const ProgramResult found = run({"stat", url("/notes.txt"), "--json"});
    const nlohmann::json object = nlohmann::json::parse(found.out);
    EXPECT_EQ(R"({"kind":"file","modified":"2026-01-01T00:00:00Z","name":"notes.txt","size":8})",
              object["entry"].dump());
    const ProgramResult missing = run({"stat", url("/missing"), "--json"});
    EXPECT_TRUE(exited(78, missing));
    EXPECT_EQ(0U, nlohmann::json::parse(missing.out).count("entry"));
}

TEST_F(SessionRun, Streams)
{
    const std::string contents = std::string(300000, 'x') + std::string("\0\r\n", 3);
    writeFile(local("file"), contents);
    serve();
    const ProgramResult sent = inShell(std::string("cat file | ") + kPipe, {"put", "-", url("/a/sent")});
    EXPECT_TRUE(exited(0, sent));
    EXPECT_TRUE(sameBytes(contents, contentOf(served("a/sent"))));
    const ProgramResult got = run({"get", url("/a/sent"), "-"});
    EXPECT_TRUE(exited(0, got));
    EXPECT_TRUE(sameBytes(contents, got.out));
    EXPECT_EQ("get: 0 No error", lastLine(got.err));
    EXPECT_TRUE(exited(0, inShell(std::string(kPipe) + " < /dev/null", {"put", "-", url("/a/empty")})));
    EXPECT_EQ("", contentOf(served("a/empty")));
}

TEST_F(SessionRun, TakesAClosedInputForNoFile)
{
    writeFile(served("file"), "as it was");
    serve();
    const ProgramResult result = inShell(std::string(kPipe) + " <&-", {"put", "-", url("/file")});
    EXPECT_TRUE(exited(26, result));
    EXPECT_EQ("put: 26 Failed to open/read local data from file/application: standard input cannot be read: Bad file "
              "descriptor",
              lastLine(result.err));
    EXPECT_EQ("as it was", contentOf(served("file")));
    EXPECT_EQ(1U, servedFiles());
}

TEST_F(SessionRun, RefusesStreamsThatCannotBe)
{
    serve();
    EXPECT_EQ("sftpclient: URL must name the file to write: standard input has no name.",
              resultOf({"put", "-", url("/a/")}));
    EXPECT_EQ("sftpclient: With - the file goes to standard output: leave --json out.",
              resultOf({"get", url("/a"), "-", "--json"}));
    EXPECT_EQ("sftpclient: With - the file comes from standard input: give the password in another way than with "
              "--password-stdin.",
              resultOf({"put", "-", url("/a"), "--password-stdin"}));
    EXPECT_EQ(0U, sessions().size());
}

TEST_F(SessionRun, EndsQuietlyIfNobodyReadsTheStream)
{
    writeFile(served("file"), std::string(1 << 20, 'x'));
    serve();
    const ProgramResult result =
        inShell(std::string(kPipe) + " | head -c 1; exit ${PIPESTATUS[0]}", {"get", url("/file"), "-", "--quiet"});
    EXPECT_TRUE(exited(128 + SIGPIPE, result));
    EXPECT_EQ("x", result.out);
}

TEST_F(SessionRun, ReportsAStreamThatCannotBeWritten)
{
    writeFile(served("file"), "contents");
    serve();
    const ProgramResult result =
        inShell(std::string(kPipe) + " > /dev/full", {"get", url("/file"), "-", "--retry=1", "--retry-delay=0"});
    EXPECT_TRUE(exited(23, result));
    EXPECT_EQ("get: 23 Failed writing received data to disk/application: standard output cannot be written: No space "
              "left on device",
              lastLine(result.err));
    EXPECT_EQ(1U, sessions().size());
}

TEST_F(SessionRun, RetriesWhatTheServerRefusesForNow)
{
    writeFile(served("file"), "contents");
    serve({"1/GREETING=reply:421 busy", "2/RETR=reply:450 locked", "3/PASS=drop"});
    const ProgramResult result = run({"get", url("/file"), "--retry=5", "--retry-delay=0", "--quiet", "--json"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_EQ(4, nlohmann::json::parse(result.out)["attempts"]);
    EXPECT_TRUE(
        holds("\nget: 28 The server ended the connection (the server's last reply: 421 busy); trying again in 0 s\n",
              result.err));
    EXPECT_TRUE(holds(std::string("\nget: 19 ") + curl_easy_strerror(CURLE_FTP_COULDNT_RETR_FILE) +
                          " (the server's last reply: 450 locked); trying again in 0 s\n",
                      result.err));
}

TEST_F(SessionRun, RetriesNoStreamThatHasBegun)
{
    writeFile(local("file"), std::string(300000, 'x'));
    writeFile(served("file"), std::string(300000, 'x'));
    serve({"1/DATA=reset-after:1000", "2/PASS=drop", "3/DATA=drop-after:1000"});
    const Words retry{"--retry=3", "--retry-delay=0"};
    Words put{"put", "-", url("/sent")};
    put.insert(put.end(), retry.begin(), retry.end());
    EXPECT_FALSE(exited(0, inShell(std::string(kPipe) + " < file", put)));
    Words get{"get", url("/file"), "-"};
    get.insert(get.end(), retry.begin(), retry.end());
    const ProgramResult got = run(get);
    EXPECT_TRUE(exited(brokenData(), got));
    EXPECT_EQ(1000U, got.out.size());
    EXPECT_EQ(3U, sessions().size()) << "but before it has begun";
    EXPECT_FALSE(exists(served("sent")));
}

TEST_F(SessionRun, RetriesNoRefusal)
{
    serve({"RETR=reply:550 no", "PASS=reply:430 wrong"});
    EXPECT_TRUE(exited(67, run({"get", url("/file"), "--retry=5", "--retry-delay=0"})));
    EXPECT_EQ(1U, sessions().size());
}

TEST_F(SessionRun, GoesOnWhereItBrokeOff)
{
    std::string contents;
    for (int i = 0; i < 40000; ++i) {
        contents += std::to_string(i) + "\n";
    }
    writeFile(served("file"), contents);
    serve({"1/DATA=drop-after:150000"});
    const ProgramResult result = run({"get", url("/file"), "--retry=1", "--retry-delay=0"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameBytes(contents, contentOf(local("file"))));
    const std::vector<Lines> said = sessions();
    ASSERT_EQ(2U, said.size());
    EXPECT_TRUE(hasLine("> REST " + std::to_string(150000 - 65536), said[1]));
}

TEST_F(SessionRun, ResumesAtTheNextRun)
{
    writeFile(served("file"), "beginning" + std::string(200000, 'x'));
    serve({"1/DATA=drop-after:150000"});
    EXPECT_TRUE(exited(brokenData(), run({"get", url("/file"), "--resume"})));
    EXPECT_TRUE(exited(0, run({"get", url("/file"), "--resume"})));
    const std::vector<Lines> said = sessions();
    ASSERT_EQ(2U, said.size());
    EXPECT_TRUE(hasLine("> REST " + std::to_string(150000 - 65536), said[1]));
    EXPECT_EQ(200009U, contentOf(local("file")).size());
}

TEST_F(SessionRun, NamesTheLimitThatWasReached)
{
    writeFile(served("file"), std::string(4000, 'x'));
    const std::string last = " (the server's last reply: ";
    serve({"DATA=stall-after:1000"});
    EXPECT_EQ("get: 28 Timeout was reached: no byte was sent or received for 1 s (--stall-time)" + last +
                  "150 data follows)",
              resultOf({"get", url("/file"), "--stall-time=1"}));
    EXPECT_EQ("get: 28 Timeout was reached: the operation did not finish within 2 s (--max-time)" + last +
                  "150 data follows)",
              resultOf({"get", url("/file"), "--max-time=2"}));
    serve({"SIZE=stall"});
    EXPECT_EQ("get: 28 Timeout was reached: no byte was sent or received for 1 s (--stall-time)" + last +
                  "200 type set)",
              resultOf({"get", url("/file"), "--stall-time=1"}));
    serve({"GREETING=stall"});
    EXPECT_EQ("get: 28 Timeout was reached: connection and login did not finish within 1 s (--connect-time)",
              resultOf({"get", url("/file"), "--connect-time=1"}));
    EXPECT_EQ("get: 28 Timeout was reached: the operation did not finish within 1 s (--max-time)",
              resultOf({"get", url("/file"), "--max-time=1"}));
}

TEST_F(SessionRun, ReportsThatTheSizeWasNotChecked)
{
    writeFile(local("file"), "contents");
    serve({"SIZE=reply:500 unknown"});
    const ProgramResult result = run({"put", "file", url(), "--quiet", "--json"});
    EXPECT_TRUE(sameText("put: the size on the server was not checked: the server does not report it\n"
                         "put: 0 No error\n",
                         result.err));
    EXPECT_EQ(false, nlohmann::json::parse(result.out)["sizeChecked"]);
}

/// The step at which a command is interrupted, and its last line.
struct Interrupted
{
    std::string fault;
    Words form; ///< a word that begins with "/" is a URL's path
    std::string shown;
    int signal;
    std::string result;
};

TEST_F(SessionRun, ReportsWhatAnInterruptionLeft)
{
    const std::string left = ": 42 interrupted by ";
    const Interrupted all[] = {
        {"DATA=stall-after:1000", {"get", "/file", "got"}, "1000 B of 3.9 KiB", SIGINT, "SIGINT; got is as it was"},
        {"DATA=stall-after:1000", {"get", "/file", "got"}, "1000 B of 3.9 KiB", SIGTERM, "SIGTERM; got is as it was"},
        {"GREETING=stall", {"put", "got", "/", "--trace"}, "* Connected to", SIGHUP, "SIGHUP; nothing was sent"},
        {"DONE=stall",
         {"put", "got", "/", "--trace"},
         "< 150",
         SIGINT,
         "SIGINT; the server has the file as it was, and may hold a part of the new one beside it"},
        {"RNTO=stall",
         {"put", "got", "/", "--trace"},
         "> RNTO",
         SIGINT,
         "SIGINT; whether the server has the new file is not known: it, or the old one, may be under another name "
         "beside it"},
        {"NLST=stall", {"ls", "/", "--trace"}, "> NLST", SIGINT, "SIGINT; nothing is left of it"},
        {"RNFR=stall",
         {"mv", "/", "old", "new", "--trace"},
         "> RNFR",
         SIGINT,
         "SIGINT; whether the server has carried it out is not known"},
    };
    writeFile(served("file"), std::string(4000, 'x'));
    for (const Interrupted& at : all) {
        SCOPED_TRACE(at.fault + " " + at.form[0]);
        writeFile(local("got"), "as it was");
        serve({at.fault});
        Words form = at.form;
        for (std::string& word : form) {
            word = word.front() == '/' ? url(word) : word;
        }
        TerminalCommand command(setupOf(form));
        command.shownUpTo(at.shown);
        command.signal(at.signal);
        EXPECT_EQ(-at.signal, command.wait());
        EXPECT_TRUE(holds(at.form[0] + left + at.result + "\r\n", command.shown())) << command.shown();
        EXPECT_EQ("as it was", contentOf(local("got")));
    }
}

TEST_F(SessionRun, NamesTheFilesThatAnInterruptionLeft)
{
    writeFile(local("file"), "contents");
    writeFile(served("file"), "as it was");
    serve({"RNTO#1=reply:553 exists", "DELE=stall"});
    TerminalCommand command(setupOf({"put", "file", url(), "--trace"}));
    command.shownUpTo("> DELE");
    command.signal(SIGINT);
    EXPECT_EQ(-SIGINT, command.wait());
    const std::string line =
        "put: 42 interrupted by SIGINT; the new file may be under .file.NNNNNNNNNNNN.part, the old "
        "one under .file.NNNNNNNNNNNN.old\r\n";
    const std::regex digits("\\.[0-9A-F]{12}\\.");
    EXPECT_TRUE(holds(line, std::regex_replace(command.shown(), digits, ".NNNNNNNNNNNN."))) << command.shown();
}

// An input that never comes must not hold a command for ever.
TEST_F(SessionRun, CanBeInterruptedWhileItWaitsForInput)
{
    serve();
    TerminalCommand command(setupOf({"put", "-", url("/sent"), "--trace"}));
    command.shownUpTo("< 150");
    command.signal(SIGINT);
    EXPECT_EQ(-SIGINT, command.wait());
    EXPECT_TRUE(
        holds("put: 42 interrupted by SIGINT; the server has the file as it was, and may hold a part of the new "
              "one beside it\r\n",
              command.shown()));
    EXPECT_FALSE(exists(served("sent")));
}

} // namespace
