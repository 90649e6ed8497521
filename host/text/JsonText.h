#ifndef SFTPCLIENT_HOST_JSONTEXT_H
#define SFTPCLIENT_HOST_JSONTEXT_H

#include <nlohmann/json_fwd.hpp>

#include <string>

/// `value` as JSON text, in ASCII alone: everything beyond it, DEL, and control characters are written as \uNNNN or a
/// short form such as \n, so that a terminal or a log can take what a server said. JSON cannot hold invalid UTF-8:
/// U+FFFD, the replacement character, stands for it. On one line, or with each level indented by `indent` blanks.
std::string jsonText(const nlohmann::ordered_json& value, int indent = -1);

#endif
