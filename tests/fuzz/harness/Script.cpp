#include "harness/Script.h"

namespace {

std::vector<std::string> split(const std::string& text, char at)
{
    std::vector<std::string> parts;
    for (std::string::size_type begin = 0; begin != std::string::npos;) {
        const std::string::size_type end = text.find(at, begin);
        parts.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
        begin = end == std::string::npos ? end : end + 1;
    }
    return parts;
}

void replaceAll(std::string& text, char what, const std::string& with)
{
    for (std::string::size_type at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, 1, with);
    }
}

} // namespace

Script::Script(const std::string& text) : contents(split(text, '^'))
{
    replies = split(contents.front(), '~');
    contents.erase(contents.begin());
}

std::string Script::text() const
{
    std::string text;
    for (const std::string& reply : replies) {
        text += (&reply == &replies.front() ? "" : "~") + reply;
    }
    for (const std::string& content : contents) {
        text += "^" + content;
    }
    return text;
}

std::string withPorts(std::string reply)
{
    replaceAll(reply, '@', std::to_string(kDataPort));
    replaceAll(reply, '#', std::to_string(kDataPort / 256) + "," + std::to_string(kDataPort % 256));
    return reply;
}
