// The scripts that the fuzzer starts from and how it changes them; and what both clients make of them.
#include "harness/Grammar.h"
#include "harness/Client.h"
#include "harness/ClientCalls.h"
#include "harness/LeftLists.h"
#include "harness/ScriptMutator.h"
#include "harness/SessionCalls.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

// libFuzzer's, which is not linked here: removes one byte.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* /*data*/, std::size_t size, std::size_t most)
{
    return std::min(size - 1, most);
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize,
                                                 const std::uint8_t* second, std::size_t secondSize, std::uint8_t* out,
                                                 std::size_t most, unsigned seed);

const std::size_t kChoices = 3;

namespace {

constexpr const char* kGoodListing = "*^type=cdir; .\r\ntype=file;size=5;modify=20260102030405; a.bak\r\n";

int resultOf(const std::string& script, unsigned operation)
{
    int code = -1;
    emptyFolder();
    runAgainst(script, [&](const SFtpRequest& request, Network& /*network*/) {
        SessionOptions options;
        options.requireTls = false;
        std::string errorText;
        code = operate(operation, *std::make_unique<SFtpSession>(options), request, errorText);
    });
    return code;
}

int resultOfClient(const std::string& script, unsigned operation)
{
    int code = -1;
    const LeftLists lists;
    runAgainst(script,
               [&](const SFtpRequest& request, Network& /*network*/) { code = operate(operation, request, 0); });
    return code;
}

TEST(GoodServer, SatisfiesEachOperationOfASession)
{
    for (unsigned operation = 0; operation < kSessionOperations; ++operation) {
        EXPECT_EQ(0, resultOf(kGoodListing, operation)) << operation;
    }
}

TEST(GoodServer, SatisfiesEachOperationOfAClient)
{
    for (unsigned operation = 0; operation < kClientOperations; ++operation) {
        const char* const script = operation == 5 ? "*" : "*~234 go\r\n!~*^!hello";
        EXPECT_EQ(0, resultOfClient(script, operation)) << operation;
    }
}

TEST(Grammar, AScriptsTextGivesTheScript)
{
    for (unsigned seed = 0; seed < 2000; ++seed) {
        Dice dice(seed);
        Script script = grammar::script(dice);
        for (int change = 0; change < 5; ++change) {
            grammar::mutate(script, dice);
        }
        const Script again(script.text());
        ASSERT_EQ(script.replies, again.replies) << seed;
        ASSERT_EQ(script.contents, again.contents) << seed;
    }
}

TEST(Grammar, LeadsASessionToManyResults)
{
    std::map<int, int> results;
    for (unsigned seed = 0; seed < 400; ++seed) {
        Dice dice(seed);
        ++results[resultOf(grammar::script(dice).text(), seed % kSessionOperations)];
    }
    for (const int code : {CURLE_OK, CURLE_WEIRD_SERVER_REPLY, CURLE_PARTIAL_FILE, CURLE_OPERATION_TIMEDOUT,
                           CURLE_SSL_CONNECT_ERROR, CURLE_RECV_ERROR, CURLE_LOGIN_DENIED}) {
        EXPECT_LT(0, results[code]) << code;
    }
}

TEST(Grammar, ACrossedScriptHasTheBeginningOfOneAndTheEndOfTheOther)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        Dice dice(seed);
        const Script crossed = grammar::crossed(Script("a~b~c^1"), Script("d~e~f^2"), dice);
        EXPECT_EQ("a", crossed.replies.front());
        EXPECT_EQ("f", crossed.replies.back());
    }
}

TEST(ScriptMutator, KeepsToTheSizeThatItIsGiven)
{
    std::set<std::string> made;
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::string input = "000*~*~550 no\r\n~*^content";
        const std::size_t size = input.size();
        const std::size_t most = size + (seed % 2 == 0 ? 20 : 4000);
        input.resize(most);
        auto* const data = reinterpret_cast<std::uint8_t*>(input.data());
        const std::size_t length = LLVMFuzzerCustomMutator(data, size, most, seed);
        ASSERT_GE(most, length) << seed;
        ASSERT_LT(0U, length) << seed;
        made.insert(input.substr(0, length));
    }
    EXPECT_LT(500U, made.size());
}

TEST(ScriptMutator, CrossesTwoInputsOrNothing)
{
    const std::string first = "000*~*^1";
    const std::string second = "555%^2";
    std::string out(100, '\0');
    const auto cross = [&](std::size_t firstSize, std::size_t most) {
        return LLVMFuzzerCustomCrossOver(reinterpret_cast<const std::uint8_t*>(first.data()), firstSize,
                                         reinterpret_cast<const std::uint8_t*>(second.data()), second.size(),
                                         reinterpret_cast<std::uint8_t*>(out.data()), most, 1);
    };
    EXPECT_EQ(0U, cross(2, out.size()));
    EXPECT_EQ(0U, cross(first.size(), 4));
    const std::size_t length = cross(first.size(), out.size());
    EXPECT_EQ("000", out.substr(0, 3));
    EXPECT_NE(std::string::npos, out.substr(0, length).find("%^"));
}

} // namespace
