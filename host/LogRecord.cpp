#include "LogRecord.h"

#include "EscapeControlBytes.h"
#include "JsonText.h"

std::string asText(const LogRecord& record)
{
    return escapeControlBytes(record.module) + " request=" + std::to_string(record.requestId) + " " +
           escapeControlBytes(record.function) + ":" + std::to_string(record.line) + " " +
           escapeControlBytes(record.text);
}

std::string asJson(const LogRecord& record)
{
    return "\"module\":" + jsonText(record.module) + ",\"request\":" + std::to_string(record.requestId) +
           ",\"function\":" + jsonText(record.function) + ",\"line\":" + std::to_string(record.line) +
           ",\"text\":" + jsonText(record.text);
}
