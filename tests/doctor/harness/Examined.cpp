#include "harness/Examined.h"

void Examined::serveAndAsk(const std::string& directory)
{
    serve();
    askAbout(url(directory));
}

void Examined::askAbout(const std::string& url)
{
    request.remotePath = url;
    question.request = request;
    question.commandUrl = url;
}

std::string outlooksOf(const std::vector<doctor::Prediction>& predictions)
{
    std::string outlooks;
    for (const doctor::Prediction& each : predictions) {
        const bool fails = each.outlook == doctor::Outlook::Fails;
        outlooks += each.outlook == doctor::Outlook::Works ? 'W' : fails ? 'F' : '?';
    }
    return outlooks;
}
