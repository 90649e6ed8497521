#include "tree/TreeResult.h"

#include "output/Progress.h"
#include "output/ResultName.h"

#include <EscapeControlBytes.h>
#include <JsonText.h>

#include <nlohmann/json.hpp>

namespace {

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

std::string lineOf(const TreeResult& result)
{
    return result.operation + ": " + std::to_string(result.code) + " " + escapeControlBytes(result.text) + ": " +
           countsOf(result);
}

std::string jsonOf(const TreeResult& result)
{
    nlohmann::ordered_json object{
        {"operation", result.operation}, {"url", result.url},
        {"code", result.code},           {"name", nameOfResult(result.code)},
        {"text", result.text},           {"dryRun", result.isDryRun},
        {"moved", result.moved},         {"bytes", result.bytes},
        {"directories", result.made},    {"deleted", result.deleted},
        {"unchanged", result.unchanged}, {"seconds", result.seconds},
        {"skipped", result.skipped},
    };
    nlohmann::ordered_json failed = nlohmann::ordered_json::array();
    for (const FailedPath& each : result.failed) {
        failed.push_back(
            {{"path", each.path}, {"code", each.code}, {"name", nameOfResult(each.code)}, {"text", each.text}});
    }
    object["failed"] = failed;
    if (result.isDryRun) {
        nlohmann::ordered_json actions = nlohmann::ordered_json::array();
        for (const TreeAction& each : result.actions) {
            actions.push_back({{"action", nameOfStep(each.step)}, {"path", each.path}});
        }
        object["actions"] = actions;
    }
    if (!result.signal.empty()) {
        object["signal"] = result.signal;
    }
    return jsonText(object);
}
