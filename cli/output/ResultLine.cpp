#include "output/ResultLine.h"

#include <EscapeControlBytes.h>

std::string lineOf(const Result& result)
{
    return result.operation + ": " + std::to_string(result.code) + " " +
           escapeControlBytes(withReply(result.text, result.reply));
}

std::string withReply(const std::string& text, const std::string& reply)
{
    return reply.empty() ? text : text + " (the server's last reply: " + reply + ")";
}
