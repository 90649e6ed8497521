#ifndef SFTPCLIENT_CLI_USAGE_SUGGEST_H
#define SFTPCLIENT_CLI_USAGE_SUGGEST_H

#include <string>
#include <vector>

/// The end of a sentence about a `word` that is not among `known`: "; did you mean --port?" where it is close to one or
/// more of them (it begins them, or a few letters are wrong, missing, too many or exchanged), else ".".
std::string suggestionFor(const std::string& word, const std::vector<std::string>& known);

#endif
