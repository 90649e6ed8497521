#include "doctor/probes/Probes.h"

#include <algorithm>

namespace doctor {

namespace {

bool isSettled(const std::string& command, const ProbeResult& result)
{
    const Reply* const reply = result.replyTo(command);
    return reply != nullptr && reply->ending != Ending::Closed;
}

} // namespace

// Where the connection ends at a command, the one before it may be the reason: it is asked once more, as the first.
ProbeResult askAbout(std::vector<std::string> commands, const std::string& url, ControlConnection& connection)
{
    ProbeResult result;
    while (!commands.empty()) {
        Transfer transfer{url, Transfer::What::Nothing};
        transfer.afterListing = commands;
        result = connection.run(transfer);
        if (!result.made) {
            connection.mayReconnect();
            result = connection.run(transfer);
        }
        const std::string first = commands.front();
        if (!result.loggedIn() || result.replyTo(first) == nullptr) {
            break;
        }
        commands.erase(
            std::remove_if(commands.begin(), commands.end(),
                           [&](const std::string& each) { return each == first || isSettled(each, result); }),
            commands.end());
    }
    return result;
}

} // namespace doctor
