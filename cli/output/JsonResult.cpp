#include "output/JsonResult.h"

#include "base/PercentCode.h"
#include "output/Listing.h"
#include "output/ResultName.h"

#include <JsonText.h>
#include <Utf8.h>

#include <nlohmann/json.hpp>

#include <algorithm>

bool isText(std::string_view name)
{
    while (!name.empty()) {
        const std::size_t length = utf8Length(name);
        if (length == 0) {
            return false;
        }
        name.remove_prefix(length);
    }
    return true;
}

namespace {

using Json = nlohmann::ordered_json;

// Names that are no text are given a second time, in a form that can be put into a URL and loses nothing.
void addNames(const std::vector<std::string>& names, Json& object)
{
    object["names"] = names;
    if (!std::all_of(names.begin(), names.end(), isText)) {
        object["encodedNames"] = Json::array();
        for (const std::string& name : names) {
            object["encodedNames"].push_back(percentEncoded(name));
        }
    }
}

Json jsonOf(const RemoteEntry& entry)
{
    const char* const kind = entry.kind == EntryKind::File        ? "file"
                             : entry.kind == EntryKind::Directory ? "directory"
                                                                  : "other";
    Json object{{"name", entry.name}, {"kind", kind}};
    if (!isText(entry.name)) {
        object["encodedName"] = percentEncoded(entry.name);
    }
    if (entry.size >= 0) {
        object["size"] = entry.size;
    }
    if (entry.modified) {
        object["modified"] = timeText(*entry.modified);
    }
    return object;
}

} // namespace

std::string jsonOf(const Result& result)
{
    Json object{{"operation", result.operation},     {"url", result.url},          {"code", result.code},
                {"name", nameOfResult(result.code)}, {"text", result.text},        {"bytes", result.bytes},
                {"seconds", result.seconds},         {"attempts", result.attempts}};
    if (!result.reply.empty()) {
        object["reply"] = result.reply;
    }
    if (!result.hint.empty()) {
        object["hint"] = result.hint;
    }
    if (result.listing) {
        addNames(namesIn(*result.listing), object);
    }
    if (result.entries) {
        object["entries"] = Json::array();
        for (const RemoteEntry& each : *result.entries) {
            object["entries"].push_back(jsonOf(each));
        }
    }
    if (result.entry) {
        object["entry"] = jsonOf(*result.entry);
    }
    if (result.sizeChecked) {
        object["sizeChecked"] = *result.sizeChecked;
    }
    if (!result.signal.empty()) {
        object["signal"] = result.signal;
    }
    return jsonText(object);
}
