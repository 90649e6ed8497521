// How the example that runs as a service ends.
#include "BackupAgent.h"
#include "NewFiles.h"

#include <csignal>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>

namespace fs = std::filesystem;

TEST_F(BackupAgent, SigtermCancelsAndLeavesNothingBehind)
{
    addLarge("deep/large.bak");
    add("never sent.bak", "later");
    fs::create_directories(served("photos/deep"));
    writeFile(served("photos/deep/.other.bak.0123456789ab.part"), "another's");
    writeFile(served("photos/deep/large.bak"), "the backup before");
    misbehave("1/DATA=stall-after:1000");
    serve();
    configure("");
    const NewFiles temporaryFiles(served("photos/deep"));
    Process agent(setup());
    EXPECT_EQ("READY=1\nSTATUS=Started", m_manager.next());
    temporaryFiles.waitFor(1);
    agent.signal(SIGTERM);
    EXPECT_EQ("STOPPING=1\nSTATUS=Cancelling what runs", m_manager.next());
    EXPECT_EQ(0, agent.wait());
    EXPECT_TRUE(sameTrees(
        {{"deep/", ""}, {"deep/.other.bak.0123456789ab.part", "another's"}, {"deep/large.bak", "the backup before"}},
        arrived()));
    EXPECT_EQ(Lines(), journal());
    EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.file("photos")), fs::directory_iterator()));
    EXPECT_EQ(1, std::distance(fs::directory_iterator(folder.file("photos/deep")), fs::directory_iterator()));
}

namespace {

class BackupAgentUpload : public BackupAgent
{
protected:
    void stopWithinAnUpload()
    {
        misbehave("1/DATA=stall-after:1000");
        serve();
        configure("");
        const NewFiles temporaryFiles(served("photos"));
        Process agent(setup());
        temporaryFiles.waitFor(1);
        agent.signal(SIGTERM);
        EXPECT_EQ(0, agent.wait());
    }
};

} // namespace

// Their names are similar, but they are files of the backup, or another upload's.
TEST_F(BackupAgentUpload, SigtermRemovesNoOtherFile)
{
    addLarge("large");
    fs::create_directories(served("photos"));
    const Tree others = {
        {".large.bak.0123456789AB.part", ""}, {".large.part", ""},         {".large.old.part", ""},
        {".large.0123456789ab.part", ""},     {".large.0123456789AB", ""}, {".lar.0123456789AB.part", ""}};
    for (const auto& other : others) {
        writeFile(served("photos/" + other.first), other.second);
    }
    stopWithinAnUpload();
    EXPECT_TRUE(sameTrees(others, arrived()));
    EXPECT_EQ(Lines(), journal());
}

// Its temporary name is cut amid a character, which it leaves out.
TEST_F(BackupAgentUpload, SigtermRemovesTheTemporaryFileOfALongName)
{
    addLarge(std::string(235, 'x') + "\u00fc.bak");
    fs::create_directories(served("photos"));
    stopWithinAnUpload();
    EXPECT_TRUE(sameTrees({}, arrived()));
    EXPECT_EQ(Lines(), journal());
}

TEST_F(BackupAgent, SigtermBeforeTheFirstByteLeavesNothingToComplainAbout)
{
    add("a.bak", "one");
    misbehave("1/AUTH=stall");
    struct Beginning
    {
        std::promise<void> promise;
        std::once_flag first;
    };
    const auto begun = std::make_shared<Beginning>(); // the server's, too, which lives longer
    config.onCommand = [begun](const std::string& /*command*/) {
        std::call_once(begun->first, [&begun] { begun->promise.set_value(); });
    };
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    begun->promise.get_future().wait();
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(Lines(), journal());
    EXPECT_FALSE(exists(served("photos")));
}

TEST_F(BackupAgent, SigtermEndsItBetweenRounds)
{
    serve();
    configure("Interval=999999\n");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 0 sent, 0 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGINT);
    EXPECT_EQ("STOPPING=1\nSTATUS=Cancelling what runs", m_manager.next());
    EXPECT_EQ(0, agent.wait());
}

// The first connection stalls in an upload, and every later one before its first reply.
TEST_F(BackupAgentUpload, ASilentServerHoldsUpAShutdownForSecondsOnly)
{
    addLarge("large.bak");
    fs::create_directory(served("photos"));
    misbehave("2/GREETING=stall");
    stopWithinAnUpload();
    EXPECT_EQ(1U, arrived().size());
    const std::string said = journal().at(0);
    EXPECT_EQ(0U, said.find("<3>temporary files may remain in " + directory() + "/: 28 ")) << said;
}
