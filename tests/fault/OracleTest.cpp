// The rows through the `curl` command: what libcurl answers without the library. scripts/oracle runs this program and
// keeps its answers.
#include "Fault.h"

#include "support/Process.h"
#include "support/RandomBytes.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

Rows chosen(const Rows& rows)
{
    Rows some;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(some), [](const Row& row) {
        // The command has no option for a reply time-out, nor for a size check.
        return row.replayed && row.responseTimeout == 0 && row.operation != Operation::Checked;
    });
    return some;
}

namespace {

Lines optionsOf(Operation operation, const std::string& file)
{
    switch (operation) {
    case Operation::List:
        return {"--ssl-reqd", "--output", file, "--list-only"};
    case Operation::Rename:
        return {"--ssl-reqd", "--output", file, "--quote", "-rename /dir/a.bak /dir/new.bak"};
    case Operation::Delete:
        return {"--ssl-reqd", "--output", file, "--quote", "-rm /dir/a.bak"};
    case Operation::Upload:
        return {"--upload-file", file, "--ftp-create-dirs", "--connect-timeout", "20"};
    default:
        return {"--ssl-reqd", "--output", file, "--connect-timeout", "20"};
    }
}

// In a race each of the row's codes is the answer, and so many bytes as there are.
std::string toldOf(const Row& row, int code, const std::optional<std::string>& left)
{
    std::string told;
    if (row.race) {
        for (const int each : row.codes) {
            told += (told.empty() ? "" : "|") + nameOf(each);
        }
    } else {
        told = nameOf(code);
    }
    if (!left) {
        return told;
    }
    if (row.left->orLess) {
        return told + " at most " + std::to_string(row.left->bytes.value_or(row.left->text.size())) + " bytes";
    }
    const bool moved = !left->empty() && *left == randomBytes(left->size());
    return told + " " + (moved ? std::to_string(left->size()) + " bytes" : testing::PrintToString(*left));
}

TEST_P(Fault, IsAnswered)
{
    if (row().operation != Operation::Upload) {
        // The library empties or creates the file before it connects, the command when there is something to write.
        writeFile(local("file"), "");
    }
    Process tool({Lines{"curl", "--disable", "--silent", "--max-time", "25", "--user",
                        request.userName + ":" + request.password, "--cacert", local("default-trust.pem")} +
                  optionsOf(row().operation, local("file")) + Lines{request.remotePath}});
    const int answer = tool.wait();
    // The library reports this one code as another, except in the connection test.
    const bool renamed = answer == CURLE_REMOTE_ACCESS_DENIED && row().operation != Operation::Connect;
    const int code = renamed ? CURLE_REMOTE_FILE_NOT_FOUND : answer;
    expectCode(code);
    expectLeft(code);
    const char* const answers = std::getenv("SFTPCLIENT_ANSWERS");
    ASSERT_NE(nullptr, answers) << "name the file that takes the answers in SFTPCLIENT_ANSWERS, or run scripts/oracle";
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string suite = test.test_suite_name();
    // A file for each process, and whole lines: they run at the same time.
    std::ofstream(answers, std::ios::app)
        << suite.substr(0, suite.find('/')) + "/" + row().name + ": " +
               toldOf(row(), answer, tellsWhatIsLeft(code) ? std::optional(whatIsLeft()) : std::nullopt) + "\n";
}

} // namespace
