#include "tree/TreeResult.h"

#include "base/PercentCode.h"
#include "output/Hint.h"
#include "output/JsonResult.h"
#include "output/Progress.h"
#include "output/ResultName.h"

#include <EscapeControlBytes.h>
#include <JsonText.h>

#include <boost/algorithm/string/predicate.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

// A path that is no text is given a second time, in a form that loses nothing.
Json withPath(Json object, const std::string& path)
{
    object["path"] = path;
    if (!isText(path)) {
        object["encodedPath"] = percentEncoded(path);
    }
    return object;
}

std::string countsOf(const TreeResult& result)
{
    const std::string would = result.isDryRun ? "would be " : "";
    std::string text =
        std::to_string(result.moved) + " " + would + "moved (" + amountText(static_cast<double>(result.bytes)) + ")";
    const auto add = [&text](std::uint64_t count, const std::string& what) {
        text += count > 0 ? ", " + std::to_string(count) + " " + what : std::string();
    };
    add(result.deleted, would + "deleted");
    text += ", " + std::to_string(result.unchanged) + " unchanged";
    add(result.skipped.size(), "skipped");
    add(result.failed.size(), "failed");
    return text;
}

} // namespace

const char* nameOfStep(TreeStep step)
{
    return step == TreeStep::MakeDirectory ? "mkdir" : step == TreeStep::Move ? "move" : "delete";
}

std::string hintOf(const TreeResult& result)
{
    if (result.failed.empty() || result.failed.front().code != result.code) {
        return {}; // all is well, or a signal ended it
    }
    const FailedPath& first = result.failed.front();
    Reply reply;
    reply.code = TreeFailure(first.code, first.text).reply();
    // Without a reply, these are failures of this side.
    const auto local = {CURLE_FAILED_INIT, CURLE_WRITE_ERROR, CURLE_UPLOAD_FAILED};
    if (reply.code == 0 && std::find(local.begin(), local.end(), first.code) != local.end()) {
        return {};
    }
    const bool isSsh = boost::istarts_with(result.url, "sftp:");
    return hintFor(isSsh ? Way::SshSession : Way::Session, static_cast<CURLcode>(first.code), reply);
}

std::string shownText(const std::string& text)
{
    std::istringstream parts(text);
    std::string shown;
    for (std::string part; std::getline(parts, part, '\\');) {
        shown += escapeControlBytes(part) + (parts.eof() ? "" : "\\");
    }
    return shown;
}

std::string lineOf(const TreeResult& result)
{
    return result.operation + ": " + std::to_string(result.code) + " " + shownText(result.text) + ": " +
           countsOf(result);
}

std::string jsonOf(const TreeResult& result)
{
    Json object{
        {"operation", result.operation}, {"url", result.url},
        {"code", result.code},           {"name", nameOfResult(result.code)},
        {"text", result.text},           {"dryRun", result.isDryRun},
        {"moved", result.moved},         {"bytes", result.bytes},
        {"directories", result.made},    {"deleted", result.deleted},
        {"unchanged", result.unchanged}, {"seconds", result.seconds},
        {"skipped", Json::array()},      {"failed", Json::array()},
    };
    for (const std::string& path : result.skipped) {
        object["skipped"].push_back(withPath(Json::object(), path));
    }
    for (const FailedPath& each : result.failed) {
        object["failed"].push_back(
            withPath({{"code", each.code}, {"name", nameOfResult(each.code)}, {"text", each.text}}, each.path));
    }
    if (result.isDryRun) {
        object["actions"] = Json::array();
        for (const TreeAction& each : result.actions) {
            object["actions"].push_back(withPath({{"action", nameOfStep(each.step)}}, each.path));
        }
    }
    if (!result.hint.empty()) {
        object["hint"] = result.hint;
    }
    if (!result.signal.empty()) {
        object["signal"] = result.signal;
    }
    return jsonText(object);
}
