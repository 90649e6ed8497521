// How much work a plan takes.
#include "support/Memory.h"

#include <tree/Plan.h>

#include <gtest/gtest.h>

namespace {

std::string name(char kind, unsigned number)
{
    return "a name of some length " + std::string(1, kind) + std::to_string(number);
}

// So many of each: links in the source, directories that cannot be listed, names of which the destination has another
// kind, files to send, and files to delete.
unsigned allocationsFor(unsigned count)
{
    TreeListing source;
    TreeListing destination;
    PlanRules rules;
    rules.deletes = true;
    for (unsigned i = 0; i < count; ++i) {
        source.links.push_back(name('l', i));
        rules.unlisted.push_back({name('u', i), 26, ""});
        source.entries[name('b', i)].kind = EntryKind::Directory;
        destination.entries[name('b', i)] = {};
        source.entries[name('s', i)] = {};
        destination.entries[name('d', i)] = {};
    }
    const memory::Watch watch;
    const Plan plan = planOf(source, destination, rules);
    const unsigned allocations = memory::allocations();
    EXPECT_EQ(count, plan.blocked.size());
    EXPECT_EQ(count, plan.moves.size());
    EXPECT_EQ(count, plan.files.size());
    return allocations;
}

} // namespace

TEST(TreePlan, OfTwiceAsMuchTakesTwiceTheWork)
{
    const unsigned once = allocationsFor(200);
    EXPECT_LT(allocationsFor(400), 3 * once);
}
