// "doctor --write": what it cleans up on the server, and what it names where it cannot.
#include "harness/Write.h"

#include <filesystem>

namespace {

TEST_F(Write, CleansUpInADirectoryToo)
{
    std::filesystem::create_directories(served("weekly/the backups"));
    misbehave("rm=reply:550 read-only");
    EXPECT_EQ(3, write("/weekly/the%20backups/")) << "rename and delete stay unknown";
    EXPECT_EQ("works 0", outlookOf("upload"));
    EXPECT_EQ("not told", roundTrip());
    EXPECT_TRUE(std::filesystem::is_empty(served("weekly/the backups"))) << said;
    expectLeftBehind(0);
}

TEST_F(Write, NamesWhatCannotBeRemoved)
{
    refuseToRemove();
    EXPECT_EQ(1, write());
    expectLeftBehind(2);
}

// The eighth session is that of the round trip and of its clean-up.
class WriteClosed : public Write
{
protected:
    WriteClosed()
    {
        for (const char* const fault : {"8/rm=reply:550 no", "8/DELE#4=last:550 no", "8/DELE=reply:550 no"}) {
            misbehave(fault);
        }
    }

    void expectNotLooked() const
    {
        EXPECT_FALSE(nothingIsLeft());
        expectLeftBehind(0);
        EXPECT_TRUE(holds("the server could not be asked; look, and remove them by hand", said)) << said;
    }

    // How many there are depends on when the end of the closed one is noticed.
    void onLaterConnections(const std::string& fault)
    {
        for (int number = 9; number <= 13; ++number) {
            misbehave(std::to_string(number) + "/" + fault);
        }
    }
};

TEST_F(WriteClosed, LooksOverAnotherConnection)
{
    onLaterConnections("DELE=reply:550 no");
    EXPECT_EQ(1, write());
    expectLeftBehind(1);
}

TEST_F(WriteClosed, RemovesOverAnotherConnectionWhatItSees)
{
    EXPECT_EQ(1, write());
    expectNothingLeft();
}

TEST_F(WriteClosed, SaysThatItCouldNotLook)
{
    onLaterConnections("NLST=drop");
    onLaterConnections("DELE=reply:550 no");
    EXPECT_EQ(1, write());
    expectNotLooked();
}

TEST_F(WriteClosed, DoesNotRepeatARefusedLogin)
{
    onLaterConnections("PASS=reply:530 no");
    EXPECT_EQ(1, write());
    EXPECT_GE(10U, sessions().size()) << "one that looks, and one that cleans up";
    expectNotLooked();
}

TEST_F(Write, ReportsAListingTooLongToSearch)
{
    constexpr int kNames = 5000;
    for (int i = 0; i < kNames; ++i) {
        writeFile(served(std::to_string(kNames + i) + std::string(240, 'a')), "");
    }
    refuseToRemove();
    EXPECT_EQ(1, write());
    expectLeftBehind(0);
    EXPECT_TRUE(holds("the server could not be asked; look, and remove them by hand", said));
}

} // namespace
