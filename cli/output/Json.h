#ifndef SFTPCLIENT_CLI_OUTPUT_JSON_H
#define SFTPCLIENT_CLI_OUTPUT_JSON_H

#include <nlohmann/json.hpp>

#include <string>

/// The object on one line.
constexpr int kOnOneLine = -1;

/// How the command writes JSON: in ASCII alone, as standard output may be a terminal, which obeys DEL and the control
/// characters beyond it. What is invalid UTF-8 is replaced by U+FFFD. Texts are handed over as they are: whoever
/// escaped them for a terminal first would have every backslash doubled.
std::string dumped(const nlohmann::ordered_json& object, int indent);

#endif
