#include "harness/AppliedSettings.h"
#include "harness/FileSizeLimit.h"
#include "harness/LogCapture.h"
#include "harness/TemporaryFolder.h"

#include <HostLog.h>
#include <LogProxy.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>

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

TEST(LostRecords, AreCountedOnceADeviceIsFullNoMore)
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
    EXPECT_EQ(shapeOf(standardError.text()),
              "TIME error SFtpClientHost request=0 HostLog::write():LINE log records lost: 3 (" + why +
                  ")\nTIME info m request=1 f():LINE 4th\n");
}

TEST(LostRecords, AreCountedInTheFileWhenTheDiskHasRoomAgain)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    HostLogSettings settings = to(folder.file("log"));
    settings.format = LogFormat::Json;
    const AppliedSettings applied(settings);
    // Standard error goes to a file here, and must have room for what is said of the loss.
    const std::string text(500, 'x');
    write(text);
    {
        const FileSizeLimit full(std::filesystem::file_size(settings.file) + 10);
        write("1st");
        write("2nd");
    }
    write("whole again");
    const std::string why = settings.file + ": File too large";
    EXPECT_EQ(standardError.text(), "Log records are being lost: " + why + "\n");
    const std::string begin =
        R"*({"time":"TIME","level":"info","module":"m","request":1,"function":"f()","line":LINE,)*";
    EXPECT_EQ(shapeOf(contentOf(settings.file)),
              begin + "\"text\":\"" + text + "\"}\n" +
                  R"*({"time":"TIME","level":"error","module":"SFtpClientHost","request":0,)*" +
                  R"*("function":"HostLog::write()","line":LINE,"text":"log records lost: 2 ()*" + why + ")\"}\n" +
                  begin + "\"text\":\"whole again\"}\n");
}

TEST(LostRecords, OfAClosedDescriptorAreCountedOnTheNextOne)
{
    const int closed = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
    ASSERT_EQ(close(closed), 0);
    HostLog::instance().setDescriptor(closed);
    write("1st");
    write("2nd");
    const LogCapture standardError;
    write("3rd");
    EXPECT_EQ(shapeOf(standardError.text()),
              "TIME error SFtpClientHost request=0 HostLog::write():LINE log records lost: 2 (descriptor " +
                  std::to_string(closed) + ": Bad file descriptor)\nTIME info m request=1 f():LINE 3rd\n");
}

TEST(LostRecords, AreNoneWhenTheFolderWasRemoved)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    const AppliedSettings applied(to(folder.file("sub/log")));
    write("1st");
    std::filesystem::remove_all(folder.file("sub"));
    write("2nd");
    EXPECT_EQ(standardError.text(), "");
    EXPECT_EQ(shapeOf(contentOf(folder.file("sub/log"))), "TIME info m request=1 f():LINE 2nd\n");
}

TEST(LostRecords, AreNoneWhenSettingsAreRefused)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    const AppliedSettings applied(to(folder.file("log")));
    const std::string impossible = folder.file("log") + "/log";
    try {
        HostLog::instance().apply(to(impossible));
        FAIL() << "a file within a file";
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        EXPECT_EQ(text.find("The log cannot be written to " + impossible + ": "), 0U) << text;
        EXPECT_NE(text.find(". Name another file, or make this one writable."), std::string::npos) << text;
    }
    write("as before");
    EXPECT_EQ(standardError.text(), "");
    EXPECT_EQ(shapeOf(contentOf(folder.file("log"))), "TIME info m request=1 f():LINE as before\n");
}

TEST(LostRecords, OfALogThatIsNoRegularFileAreToldAndCounted)
{
    const TemporaryFolder folder;
    const LogCapture standardError;
    const AppliedSettings applied(to(folder.file("log")));
    ASSERT_EQ(rename(folder.file("log").c_str(), folder.file("old").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.file("log").c_str(), 0600), 0);
    write("1st");
    write("2nd");
    ASSERT_EQ(remove(folder.file("log").c_str()), 0);
    write("3rd");
    const std::string why = folder.file("log") + " is not a regular file. Remove it, or name another file";
    EXPECT_EQ(standardError.text(), "Log records are being lost: " + why + "\n");
    EXPECT_EQ(shapeOf(contentOf(folder.file("log"))),
              "TIME error SFtpClientHost request=0 HostLog::write():LINE log records lost: 2 (" + why +
                  ")\nTIME info m request=1 f():LINE 3rd\n");
}

TEST(LostRecords, AreNoneWhenALogThatIsNoRegularFileIsRefused)
{
    try {
        HostLog::instance().apply(to("/dev/null"));
        FAIL() << "a device";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "The log cannot be written to /dev/null: /dev/null is not a regular file. Remove it, "
                     "or name another file.");
    }
}
