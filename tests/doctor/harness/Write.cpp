#include "harness/Write.h"

#include <filesystem>
#include <stdexcept>

Words Write::arguments(const std::string& directory)
{
    writeFile(local("ca.pem"), request.caCert);
    return {url(directory), "--user", config.user, "--ca", local("ca.pem"), "--clear-login", "--write", "--json"};
}

Variables Write::variables()
{
    std::filesystem::create_directory(local("tmp"));
    return {{"TMPDIR", local("tmp")}};
}

int Write::write(const std::string& directory, const Words& more)
{
    serve();
    Words words = arguments(directory);
    words.insert(words.end(), more.begin(), more.end());
    DoctorProcess process(words, config.password, variables());
    return report(process);
}

int Write::report(DoctorProcess& process)
{
    const int status = process.wait();
    said = process.out() + process.err();
    json = nlohmann::json::parse(process.out());
    EXPECT_TRUE(nothingIsLeftHere());
    return status;
}

void Write::refuseToRemove()
{
    misbehave("rm=reply:550 read-only");
    misbehave("DELE=reply:550 read-only");
}

nlohmann::json Write::predictionOf(const std::string& operation) const
{
    for (const auto& each : json["operations"]) {
        if (each["operation"] == operation) {
            return each;
        }
    }
    throw std::runtime_error(operation + " is not told");
}

std::string Write::outlookOf(const std::string& operation) const
{
    const nlohmann::json prediction = predictionOf(operation);
    return prediction["outlook"].get<std::string>() + " " +
           (prediction["code"].is_null() ? "" : prediction["code"].dump());
}

std::string Write::roundTrip(const std::string& which) const
{
    for (const auto& each : json["findings"]) {
        if (each["probe"] == which) {
            return each["grade"].get<std::string>() + ": " + each["seen"].get<std::string>();
        }
    }
    return "not told";
}

bool Write::nothingIsLeft() const { return std::filesystem::is_empty(served("")); }

bool Write::nothingIsLeftHere() const { return std::filesystem::is_empty(local("tmp")); }

void Write::expectNothingLeft() const
{
    EXPECT_TRUE(nothingIsLeft()) << said;
    EXPECT_EQ(0U, json["leftBehind"].size()) << said;
    EXPECT_FALSE(holds("left behind", said));
}

void Write::expectLeftBehind(std::size_t files) const
{
    ASSERT_EQ(files, json["leftBehind"].size()) << said;
    for (const std::string left : json["leftBehind"]) {
        EXPECT_TRUE(exists(served(left.substr(left.rfind('/'))))) << left;
    }
}
