#ifndef SFTPCLIENT_CLI_OUTPUT_HINT_H
#define SFTPCLIENT_CLI_OUTPUT_HINT_H

#include <curl/curl.h>

#include <string>

/// What most often is behind a result, and what to do about it; empty where nothing can be said in general.
std::string hintFor(CURLcode result);

#endif
