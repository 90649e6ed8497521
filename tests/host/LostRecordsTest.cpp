#include "harness/AppliedSettings.h"
#include "support/FileSizeLimit.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <HostLog.h>
#include <LogProxy.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace {

void write(const std::string& text) { LogProxy(2, "m", 1, "f()", 2) << 0 << text; }

HostLogSettings to(const std::string& file)
{
    HostLogSettings settings;
    settings.file = file;
    return settings;
}

std::string shapeOf(const std::string& log) { return replaceLines(replaceTimes(log)); }

} // namespace

TEST(LostRecords, AreCountedOnceADeviceHasRoomAgain)
{
    const LogCapture standardError;
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    HostLog::instance().setDescriptor(full);
    write("1st");
    write("2nd");
    write("3rd");
    HostLog::instance().setDescriptor(standardError.descriptor());
    const std::string why = "descriptor " + std::to_string(full) + ": No space left on device";
    close(full);
    write("4th");
    EXPECT_EQ("TIME error SFtpClientHost request=0 HostLog::write():LINE log records lost: 3 (" + why +
                  ")\nTIME info m request=1 f():LINE 4th\n",
              shapeOf(standardError.text()));
}

TEST(LostRecords, AreCountedInTheFileWhenTheDiskHasRoomAgain)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    HostLogSettings settings = to(folder.file("log"));
    settings.format = LogFormat::Json;
    const AppliedSettings applied(settings);
    // Standard error goes to a file here, and must have room for the report of the loss.
    const std::string text(500, 'x');
    write(text);
    {
        const FileSizeLimit full(std::filesystem::file_size(settings.file) + 10);
        write("1st");
        write("2nd");
    }
    write("whole again");
    const std::string why = settings.file + ": File too large";
    EXPECT_EQ("Log records are being lost: " + why + "\n", standardError.text());
    const std::string begin =
        R"*({"time":"TIME","level":"info","module":"m","request":1,"function":"f()","line":LINE,)*";
    EXPECT_EQ(begin + "\"text\":\"" + text + "\"}\n" +
                  R"*({"time":"TIME","level":"error","module":"SFtpClientHost","request":0,)*" +
                  R"*("function":"HostLog::write()","line":LINE,"text":"log records lost: 2 ()*" + why + ")\"}\n" +
                  begin + "\"text\":\"whole again\"}\n",
              shapeOf(contentOf(settings.file)));
}

TEST(LostRecords, OfAClosedDescriptorAreCountedOnTheNextOne)
{
    const int closed = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
    ASSERT_EQ(0, close(closed));
    HostLog::instance().setDescriptor(closed);
    write("1st");
    write("2nd");
    const LogCapture standardError;
    write("3rd");
    EXPECT_EQ("TIME error SFtpClientHost request=0 HostLog::write():LINE log records lost: 2 (descriptor " +
                  std::to_string(closed) + ": Bad file descriptor)\nTIME info m request=1 f():LINE 3rd\n",
              shapeOf(standardError.text()));
}

TEST(LostRecords, AreNoneWhenTheFolderWasRemoved)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    const AppliedSettings applied(to(folder.file("sub/log")));
    write("1st");
    std::filesystem::remove_all(folder.file("sub"));
    write("2nd");
    EXPECT_EQ("", standardError.text());
    EXPECT_EQ("TIME info m request=1 f():LINE 2nd\n", shapeOf(contentOf(folder.file("sub/log"))));
}

TEST(LostRecords, AreNoneWhenSettingsAreRefused)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    const AppliedSettings applied(to(folder.file("log")));
    const std::string impossible = folder.file("log") + "/log";
    const std::string refusal = thrownBy([&] { HostLog::instance().apply(to(impossible)); });
    EXPECT_EQ(0U, refusal.find("The log cannot be written to " + impossible + ": ")) << refusal;
    EXPECT_TRUE(holds(". Name another file, or make this one writable.", refusal));
    write("as before");
    EXPECT_EQ("", standardError.text());
    EXPECT_EQ("TIME info m request=1 f():LINE as before\n", shapeOf(contentOf(folder.file("log"))));
}

TEST(LostRecords, OfASpecialFileAreReportedAndCounted)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    const AppliedSettings applied(to(folder.file("log")));
    ASSERT_EQ(0, rename(folder.file("log").c_str(), folder.file("old").c_str()));
    ASSERT_EQ(0, mkfifo(folder.file("log").c_str(), 0600));
    write("1st");
    write("2nd");
    ASSERT_EQ(0, remove(folder.file("log").c_str()));
    write("3rd");
    const std::string why = folder.file("log") + " is not a regular file. Remove it, or name another file";
    EXPECT_EQ("Log records are being lost: " + why + "\n", standardError.text());
    EXPECT_EQ("TIME error SFtpClientHost request=0 HostLog::write():LINE log records lost: 2 (" + why +
                  ")\nTIME info m request=1 f():LINE 3rd\n",
              shapeOf(contentOf(folder.file("log"))));
}

TEST(LostRecords, AreNoneIfASpecialFileIsRefused)
{
    EXPECT_EQ(
        "The log cannot be written to /dev/null: /dev/null is not a regular file. Remove it, or name another file.",
        thrownBy([] { HostLog::instance().apply(to("/dev/null")); }));
}
